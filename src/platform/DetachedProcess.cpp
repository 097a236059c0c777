// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/DetachedProcess.h"

#include "platform/ArgumentVector.h"

#include <QFile>
#include <QStandardPaths>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

QByteArray findProgram(const QByteArray& program) {
    if (program.contains('/'))
        return access(program.constData(), X_OK) == 0 ? program : QByteArray();
    return QFile::encodeName(QStandardPaths::findExecutable(QFile::decodeName(program)));
}

bool startDetached(const QByteArray& program, const QList<QByteArray>& args) {
    const QByteArray executable = findProgram(program);
    if (executable.isEmpty())
        return false;
    const ArgumentVector argv(executable, args);

    // The grandchild reports a failed exec through this pipe; a successful exec
    // closes it empty.
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0)
        return false;
    // Two forks: the middle process ends at once, so the program is nobody's child
    // here and needs no reaping. Between fork and exec only async-signal-safe calls.
    const pid_t middle = fork();
    if (middle < 0) {
        close(report[0]);
        close(report[1]);
        return false;
    }
    if (middle == 0) {
        const auto reportFailure = [&report] {
            const int failure = errno;
            [[maybe_unused]] const ssize_t written = write(report[1], &failure, sizeof failure);
        };
        setsid();
        const pid_t child = fork();
        if (child < 0) {
            reportFailure();
        } else if (child == 0) {
            sigset_t none;
            sigemptyset(&none);
            sigprocmask(SIG_SETMASK, &none, nullptr);
            const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
            if (null >= 0) {
                dup2(null, STDIN_FILENO);
                dup2(null, STDOUT_FILENO);
                dup2(null, STDERR_FILENO);
            }
            execve(argv.data()[0], argv.data(), environ);
            reportFailure();
        }
        _exit(0);
    }
    close(report[1]);
    int status = 0;
    while (waitpid(middle, &status, 0) < 0 && errno == EINTR) {
    }
    int failure = 0;
    ssize_t got = 0;
    while ((got = read(report[0], &failure, sizeof failure)) < 0 && errno == EINTR) {
    }
    close(report[0]);
    return got == 0;
}
