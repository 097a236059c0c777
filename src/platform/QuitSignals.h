// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>

class QSocketNotifier;

// SIGTERM, SIGINT and SIGHUP end the program the orderly way: the signal is written to
// a pipe that the event loop watches, and quitRequested follows there, so that what
// the program is making is removed as at any other quit. A second signal while the
// first is being answered ends the program at once.
class QuitSignals : public QObject {
    Q_OBJECT
public:
    // One per program; the handlers stay until it is destroyed.
    explicit QuitSignals(QObject* parent = nullptr);
    ~QuitSignals() override;

Q_SIGNALS:
    void quitRequested(int signal);

private:
    void readSignal();

    QSocketNotifier* notifier = nullptr;
};
