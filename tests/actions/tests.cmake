# SPDX-License-Identifier: GPL-2.0-or-later
# The hand-offs talk to stand-ins for the desktop's services on a private session bus.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_handoffs.cpp dbus-run-session --)
# The clipboard test runs once offscreen (from its file's name) and once more on a real
# X server, where xclip reads what another program would paste.
add_test(NAME tst_clipboard_x11
         COMMAND xvfb-run -a -s "-screen 0 1280x1024x24" env QT_QPA_PLATFORM=xcb
                 $<TARGET_FILE:tst_clipboard>)
set_tests_properties(tst_clipboard_x11 PROPERTIES ENVIRONMENT "LC_ALL=C.UTF-8" TIMEOUT 300)

# The program around one action, ended at random moments by tst_wholeresults.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_wholeresults.cpp)
add_executable(actionrunner ${CMAKE_CURRENT_LIST_DIR}/actionrunner.cpp)
target_link_libraries(actionrunner PRIVATE sizeloomlib)
target_compile_definitions(tst_wholeresults PRIVATE ACTION_RUNNER="$<TARGET_FILE:actionrunner>")
add_dependencies(tst_wholeresults actionrunner)

# Actions on loop-mounted images: their mounts are seen by nothing else and go with the
# test, also when it fails halfway.
foreach(test tst_compress tst_duplicate tst_rename tst_trash)
  sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/${test}.cpp
                        ${CMAKE_CURRENT_LIST_DIR}/../in-own-mount-namespace.sh)
endforeach()
