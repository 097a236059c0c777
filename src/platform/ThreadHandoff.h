// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Debian's Qt is not built for ThreadSanitizer, so a value handed to another thread
// through one of Qt's queues (a QThreadPool job, a queued call) looks unsynchronised
// to it. These mark such a hand-off by the address of what is handed over; they do
// nothing in other builds.
#if defined(__SANITIZE_THREAD__)
#define SIZELOOM_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define SIZELOOM_TSAN 1
#endif
#endif

#ifdef SIZELOOM_TSAN
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
// Before the object is handed to the other thread.
inline void handOffSent(void* object) {
    __tsan_release(object);
}
// First thing on the thread that receives it.
inline void handOffReceived(void* object) {
    __tsan_acquire(object);
}
#else
inline void handOffSent(void*) {}
inline void handOffReceived(void*) {}
#endif
