# SPDX-License-Identifier: GPL-2.0-or-later
# A walk stopped over a slowed FUSE mount, which the test mounts in a mount namespace of
# its own. The FUSE server needs libfuse3; without it the test is built all the same and
# says why it skips.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_stoponslowmount.cpp
                      ${CMAKE_CURRENT_LIST_DIR}/../in-own-mount-namespace.sh)
pkg_check_modules(FUSE3 IMPORTED_TARGET fuse3)
if(FUSE3_FOUND)
  add_executable(slowfs ${CMAKE_CURRENT_LIST_DIR}/slowfs.cpp)
  target_link_libraries(slowfs PRIVATE PkgConfig::FUSE3)
  target_compile_definitions(tst_stoponslowmount PRIVATE SLOWFS_BINARY="$<TARGET_FILE:slowfs>")
  add_dependencies(tst_stoponslowmount slowfs)
endif()
