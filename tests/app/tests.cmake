# SPDX-License-Identifier: GPL-2.0-or-later
# The real program under a real (virtual) X server.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_endtoend.cpp dbus-run-session -- xvfb-run -a -s "-screen 0 1280x1024x24")
target_link_libraries(tst_endtoend PRIVATE X11)
target_compile_definitions(tst_endtoend PRIVATE SIZELOOM_BINARY="$<TARGET_FILE:sizeloom>")
add_dependencies(tst_endtoend sizeloom)

# The desktop files must pass the validators that distributions and software centres
# run on them.
add_test(NAME desktop_entry_valid
         COMMAND desktop-file-validate ${CMAKE_SOURCE_DIR}/desktop/org.sizeloom.Sizeloom.desktop)
add_test(NAME metainfo_valid
         COMMAND appstreamcli validate --no-net
                 ${CMAKE_SOURCE_DIR}/desktop/org.sizeloom.Sizeloom.metainfo.xml)

# An install into a scratch prefix puts the program and its desktop files where the
# desktop looks for them.
add_test(NAME install_layout
         COMMAND ${CMAKE_COMMAND} -DBUILD_DIR=${CMAKE_BINARY_DIR} -DSOURCE_DIR=${CMAKE_SOURCE_DIR}
                 -DPREFIX=${CMAKE_CURRENT_BINARY_DIR}/install-layout
                 -P ${CMAKE_CURRENT_LIST_DIR}/InstallLayout.cmake)

# A volume that never answers is mounted in a mount namespace of the test's own.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_hungmount.cpp
                      ${CMAKE_CURRENT_LIST_DIR}/../in-own-mount-namespace.sh)
target_compile_definitions(tst_hungmount PRIVATE ACTION_RUNNER="$<TARGET_FILE:actionrunner>")
add_dependencies(tst_hungmount actionrunner)

# The program's leaks are told apart from those of Qt's screen-reader bridge by the
# frames they were made in (tools/lsan.supp); that takes the full call stack.
if(SIZELOOM_SANITIZE STREQUAL "address")
  set_property(TEST tst_endtoend APPEND PROPERTY ENVIRONMENT ASAN_OPTIONS=fast_unwind_on_malloc=0)
endif()
