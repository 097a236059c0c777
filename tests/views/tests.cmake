# SPDX-License-Identifier: GPL-2.0-or-later
# The volumes panel follows images mounted in a namespace of the test's own.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_volumeslive.cpp
                      ${CMAKE_CURRENT_LIST_DIR}/../in-own-mount-namespace.sh)
