// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <unistd.h>
#include <utility>

// A file descriptor closed when it goes out of scope; moved, never copied.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other)
            reset(std::exchange(other.fd, -1));
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { reset(); }

    int get() const { return fd; }
    bool valid() const { return fd >= 0; }
    explicit operator bool() const { return valid(); }
    // Gives the descriptor up without closing it.
    int release() { return std::exchange(fd, -1); }
    void reset(int next = -1) {
        if (fd >= 0)
            ::close(fd);
        fd = next;
    }

private:
    int fd = -1;
};
