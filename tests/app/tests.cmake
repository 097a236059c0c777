# The real program under a real (virtual) X server.
sizeloom_wrapped_test(${CMAKE_CURRENT_LIST_DIR}/tst_endtoend.cpp xvfb-run -a -s "-screen 0 1280x1024x24")
target_link_libraries(tst_endtoend PRIVATE X11)
target_compile_definitions(tst_endtoend PRIVATE SIZELOOM_BINARY="$<TARGET_FILE:sizeloom>")
add_dependencies(tst_endtoend sizeloom)
