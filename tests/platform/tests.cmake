# SPDX-License-Identifier: GPL-2.0-or-later
# The single-instance test owns a bus name, so it gets a private session bus.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_singleinstance.cpp dbus-run-session --)
# The mount monitor sees images mounted and unmounted in a namespace of its own.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_mountmonitor.cpp
                      ${CMAKE_CURRENT_LIST_DIR}/../in-own-mount-namespace.sh)
