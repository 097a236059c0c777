# SPDX-License-Identifier: GPL-2.0-or-later
# Installs BUILD_DIR into PREFIX and checks that each file lands in its standard place
# with the content of its source.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}
                RESULT_VARIABLE result OUTPUT_QUIET)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "cmake --install failed: ${result}")
endif()

set(id org.sizeloom.Sizeloom)
set(expected
  "share/applications/${id}.desktop=desktop/${id}.desktop"
  "share/metainfo/${id}.metainfo.xml=desktop/${id}.metainfo.xml"
  "share/icons/hicolor/scalable/apps/${id}.svg=resources/icons/${id}.svg")
foreach(pair ${expected})
  string(REPLACE "=" ";" pair ${pair})
  list(GET pair 0 installed)
  list(GET pair 1 source)
  if(NOT EXISTS ${PREFIX}/${installed})
    message(FATAL_ERROR "missing: ${installed}")
  endif()
  file(SHA256 ${PREFIX}/${installed} got)
  file(SHA256 ${SOURCE_DIR}/${source} want)
  if(NOT got STREQUAL want)
    message(FATAL_ERROR "${installed} differs from ${source}")
  endif()
endforeach()

if(NOT EXISTS ${PREFIX}/bin/sizeloom OR IS_DIRECTORY ${PREFIX}/bin/sizeloom)
  message(FATAL_ERROR "missing: bin/sizeloom")
endif()
execute_process(COMMAND test -x ${PREFIX}/bin/sizeloom RESULT_VARIABLE executable)
if(NOT executable EQUAL 0)
  message(FATAL_ERROR "bin/sizeloom is not executable")
endif()
file(REMOVE_RECURSE ${PREFIX})
