# SPDX-License-Identifier: GPL-2.0-or-later
# -DSIZELOOM_SANITIZE=address: AddressSanitizer with UndefinedBehaviorSanitizer.
# -DSIZELOOM_SANITIZE=thread: ThreadSanitizer. Each wants its own build folder.
# SIZELOOM_SANITIZER_ENV is what ctest hands every test so that a finding fails it.
set(SIZELOOM_SANITIZE "" CACHE STRING "Build with sanitizers: address (ASan + UBSan) or thread (TSan)")
set_property(CACHE SIZELOOM_SANITIZE PROPERTY STRINGS "" address thread)
set(SIZELOOM_SANITIZER_ENV "")

if(SIZELOOM_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # Leaks found wholly inside the libraries we use are named in tools/lsan.supp.
  set(SIZELOOM_SANITIZER_ENV "UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1"
                             "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tools/lsan.supp")
elseif(SIZELOOM_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
  # Debian's Qt is not built for TSan: the file names races found wholly inside Qt.
  # QProcess forks from a process with threads, which TSan refuses unless told not to.
  set(SIZELOOM_SANITIZER_ENV
      "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tools/tsan-qt.supp:halt_on_error=1:die_after_fork=0")
elseif(NOT SIZELOOM_SANITIZE STREQUAL "")
  message(FATAL_ERROR "SIZELOOM_SANITIZE is address, thread or empty, not '${SIZELOOM_SANITIZE}'")
endif()
