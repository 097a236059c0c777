// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Load for "under load" figures: one "yes" writing to /dev/null keeps a core busy for
// as long as the object lives.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

class BusyCore {
public:
    BusyCore() {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        char program[] = "/usr/bin/yes";
        char* argv[] = {program, nullptr};
        if (posix_spawn(&pid, program, &actions, nullptr, argv, environ) != 0)
            pid = 0;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~BusyCore() {
        if (pid <= 0)
            return;
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }

private:
    pid_t pid = 0;
};
