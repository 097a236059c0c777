// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QDBusContext>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QUrl>
#include <QVariantMap>

// One running program per session. The first launch takes the bus name and answers
// the freedesktop Application interface; a later launch hands its arguments over and
// ends. Without a session bus every launch simply runs on its own.
class SingleInstance : public QObject, protected QDBusContext {
    Q_OBJECT
public:
    static const QString serviceName;
    static const QString objectPath;

    explicit SingleInstance(QObject* parent = nullptr);
    ~SingleInstance() override;

    // In a later launch, before any window: hands the arguments (those after the
    // program's name) to the running program, or asks it to come to the front when
    // there are none. True when it answered, so this launch should end.
    static bool forwardIfRunning(const QList<QByteArray>& arguments);

    // In the first launch: takes the bus name. False without a session bus or when
    // another program holds the name; the program then runs on its own.
    bool registerPrimary();

    // The interface's calls, as the bus delivers them.
    void activate(const QVariantMap& platformData);
    void open(const QStringList& uris, const QVariantMap& platformData);
    void refuseAction(const QString& name);

Q_SIGNALS:
    // Another launch or the desktop asks for the window to come to the front.
    void activationRequested();
    // Local files handed over, in the order given; never empty.
    void openRequested(const QList<QUrl>& urls);

private:
    bool registered = false;
};
