// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Stand-ins for the desktop's services, registered on a private session bus on a
// connection of their own, recording every call they get.
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <sys/stat.h>

struct BusCall {
    QString method;
    QStringList uris;
    QString startupId;
};

class FakeFileManager : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    QList<BusCall> calls;
    // Some file managers have no properties window of their own.
    bool hasProperties = true;

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString& startupId) {
        calls << BusCall{QStringLiteral("ShowItems"), uris, startupId};
    }
    void ShowItemProperties(const QStringList& uris, const QString& startupId) {
        if (!hasProperties) {
            sendErrorReply(QDBusError::UnknownMethod, QStringLiteral("no such method"));
            return;
        }
        calls << BusCall{QStringLiteral("ShowItemProperties"), uris, startupId};
    }
};

struct PreviewCall {
    QString uri;
    int windowHandle = -1;
    bool closeIfShown = false;
};

class FakePreviewer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.NautilusPreviewer")
public:
    QList<PreviewCall> calls;

public Q_SLOTS:
    void ShowFile(const QString& uri, int windowHandle, bool closeIfShown) {
        calls << PreviewCall{uri, windowHandle, closeIfShown};
    }
};

// The portal's e-mail interface: records the attachments as (device, inode) of the
// descriptors it was handed.
class FakeEmailPortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Email")
    Q_PROPERTY(uint version READ version)
public:
    QList<QList<std::pair<dev_t, ino_t>>> attachments;
    uint version() const { return 4; }

public Q_SLOTS:
    QDBusObjectPath ComposeEmail(const QString&, const QVariantMap& options) {
        qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
        QList<QDBusUnixFileDescriptor> fds;
        options.value(QStringLiteral("attachment_fds")).value<QDBusArgument>() >> fds;
        QList<std::pair<dev_t, ino_t>> files;
        for (const QDBusUnixFileDescriptor& fd : fds) {
            struct stat st {};
            fstat(fd.fileDescriptor(), &st);
            files.append({st.st_dev, st.st_ino});
        }
        attachments << files;
        return QDBusObjectPath("/org/freedesktop/portal/desktop/request/1_1/t");
    }
};

// The three, each present or absent, on a connection of their own.
class FakeDesktop {
public:
    FakeFileManager fileManager;
    FakePreviewer previewer;
    FakeEmailPortal portal;

    FakeDesktop() : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "fakes")) {
        bus.registerObject("/org/freedesktop/FileManager1", &fileManager,
                           QDBusConnection::ExportAllSlots);
        bus.registerObject("/org/gnome/NautilusPreviewer", &previewer,
                           QDBusConnection::ExportAllSlots);
        bus.registerObject("/org/freedesktop/portal/desktop", &portal,
                           QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
    }
    ~FakeDesktop() {
        setPresent(false, false, false);
        QDBusConnection::disconnectFromBus("fakes");
    }
    bool isConnected() const { return bus.isConnected(); }

    void setPresent(bool withFileManager, bool withPreviewer, bool withPortal) {
        const auto own = [this](const char* name, bool present) {
            if (present)
                bus.registerService(name);
            else
                bus.unregisterService(name);
        };
        own("org.freedesktop.FileManager1", withFileManager);
        own("org.gnome.NautilusPreviewer", withPreviewer);
        own("org.freedesktop.portal.Desktop", withPortal);
    }

private:
    QDBusConnection bus;
};
