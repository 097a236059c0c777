# SPDX-License-Identifier: GPL-2.0-or-later
# The walk tests mount images, sysfs and a folder into itself: in a mount namespace of
# their own, so that nothing else on the machine sees those mounts.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_walkengine.cpp
                      ${CMAKE_CURRENT_LIST_DIR}/../in-own-mount-namespace.sh)
