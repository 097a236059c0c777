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
