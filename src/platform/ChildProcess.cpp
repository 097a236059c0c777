// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/ChildProcess.h"

#include "platform/ArgumentVector.h"
#include "platform/StopFlag.h"

#include <QHash>
#include <QMutex>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

// Children being waited for, with the work each runs for. A child is started and
// entered here under one lock, so that work stopped at any moment either finds its
// child here or keeps it from starting.
QMutex runningLock;
QHash<pid_t, const StopFlag*> running;

} // namespace

void endChildrenOfStoppedWork() {
    QMutexLocker lock(&runningLock);
    for (auto child = running.cbegin(); child != running.cend(); ++child)
        if (child.value() && child.value()->isStopped())
            kill(child.key(), SIGKILL);
}

std::optional<QByteArray> runForOutput(const QByteArray& program, const QList<QByteArray>& args,
                                       const StopFlag* stop) {
    int pipeFds[2];
    // Close-on-exec so that processes spawned by other workers at the same moment
    // do not inherit this pipe and keep it open past this child's exit.
    if (pipe2(pipeFds, O_CLOEXEC) != 0)
        return std::nullopt;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeFds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);

    const ArgumentVector argv(program, args);

    pid_t pid = 0;
    int rc = ECANCELED;
    {
        QMutexLocker lock(&runningLock);
        if (!stop || !stop->isStopped())
            rc = posix_spawn(&pid, program.constData(), &actions, nullptr, argv.data(), environ);
        if (rc == 0)
            running.insert(pid, stop);
    }
    posix_spawn_file_actions_destroy(&actions);
    close(pipeFds[1]);
    if (rc != 0) {
        close(pipeFds[0]);
        return std::nullopt;
    }
    QByteArray out;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(pipeFds[0], buffer, sizeof buffer);
        if (n > 0)
            out.append(buffer, n);
        else if (n == 0 || errno != EINTR)
            break;
    }
    close(pipeFds[0]);
    {
        // Forgotten before it is reaped: until then its pid cannot be reused.
        QMutexLocker lock(&runningLock);
        running.remove(pid);
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return out;
}
