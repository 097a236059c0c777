# SPDX-License-Identifier: GPL-2.0-or-later
# What the desktop needs besides the program: its launcher entry, its software-centre
# description and its icon, in the places the freedesktop standards look for them.
set(SIZELOOM_APP_ID org.sizeloom.Sizeloom)

install(FILES ${CMAKE_SOURCE_DIR}/desktop/${SIZELOOM_APP_ID}.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_SOURCE_DIR}/desktop/${SIZELOOM_APP_ID}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${CMAKE_SOURCE_DIR}/resources/icons/${SIZELOOM_APP_ID}.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
