// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <utility>

// The system's reason an operation failed: an errno value, never 0.
struct Failure {
    int error;
};

// What an operation that can fail gives back: its value, or the system's reason it
// has none. The window turns the reason into text in one place.
template <typename T> class Outcome {
public:
    Outcome(T value) : held(std::move(value)) {}
    Outcome(Failure failure) : reason(failure.error) {}

    bool ok() const { return held.has_value(); }
    explicit operator bool() const { return ok(); }
    // 0 when it succeeded.
    int error() const { return reason; }

    T& operator*() { return *held; }
    const T& operator*() const { return *held; }
    T* operator->() { return &*held; }
    const T* operator->() const { return &*held; }

private:
    std::optional<T> held;
    int reason = 0;
};

// An operation that gives nothing back but whether it was done.
template <> class Outcome<void> {
public:
    Outcome() = default;
    Outcome(Failure failure) : reason(failure.error) {}
    // From an errno-style result: 0 is success.
    static Outcome fromError(int error) { return error ? Outcome(Failure{error}) : Outcome(); }

    bool ok() const { return reason == 0; }
    explicit operator bool() const { return ok(); }
    int error() const { return reason; }

private:
    int reason = 0;
};

using Done = Outcome<void>;
