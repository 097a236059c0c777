// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/QuitSignals.h"

#include <QSocketNotifier>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};
int pipeEnds[2] = {-1, -1};
std::atomic<int> received{0};

// Only what is safe inside a signal handler: an atomic, a write, and the default action.
void onSignal(int signal) {
    if (received.fetch_add(1) > 0) {
        ::signal(signal, SIG_DFL);
        raise(signal);
        return;
    }
    const unsigned char byte = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &byte, 1);
}

} // namespace

QuitSignals::QuitSignals(QObject* parent) : QObject(parent) {
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &QuitSignals::readSignal);
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : kSignals)
        sigaction(signal, &action, nullptr);
}

QuitSignals::~QuitSignals() {
    for (const int signal : kSignals)
        ::signal(signal, SIG_DFL);
    delete notifier;
    for (int& end : pipeEnds) {
        if (end >= 0)
            close(end);
        end = -1;
    }
}

void QuitSignals::readSignal() {
    unsigned char byte = 0;
    if (read(pipeEnds[0], &byte, 1) == 1)
        Q_EMIT quitRequested(byte);
}
