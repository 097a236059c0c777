# SPDX-License-Identifier: GPL-2.0-or-later
# The program is a stack of layers, bottom first. Each is one folder of src/ and one
# static library that links only the layers below it (through the one right below);
# the README's architecture section says what each owns. tests/LayerOrder.cmake fails
# when a file includes a header of a layer above its own.
set(SIZELOOM_LAYERS text platform core ui actions views window app)

# Resources are compiled into an object library whose objects every program linking
# the layers takes directly: from inside a static archive the linker would drop them,
# since nothing refers to them by name.
file(GLOB SIZELOOM_RESOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/*.qrc)
add_library(sizeloomres OBJECT ${SIZELOOM_RESOURCES})
target_link_libraries(sizeloomres PRIVATE Qt6::Core)

set(below "")
foreach(layer ${SIZELOOM_LAYERS})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${layer}/*.cpp
       ${CMAKE_SOURCE_DIR}/src/${layer}/*.h)
  list(FILTER sources EXCLUDE REGEX "/src/app/main\\.cpp$")
  add_library(sizeloom_${layer} STATIC ${sources})
  target_include_directories(sizeloom_${layer} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(sizeloom_${layer} PUBLIC ${below})
  set(below sizeloom_${layer})
endforeach()

# What each layer takes from outside: core and platform no widgets.
target_link_libraries(sizeloom_text PUBLIC Qt6::Core)
target_link_libraries(sizeloom_platform PUBLIC Qt6::DBus PkgConfig::MOUNT PkgConfig::BLKID
                                               PkgConfig::GIO LibArchive::LibArchive)
target_link_libraries(sizeloom_ui PUBLIC Qt6::Gui Qt6::Widgets Qt6::Svg)
target_sources(sizeloom_ui INTERFACE $<TARGET_OBJECTS:sizeloomres>)
add_dependencies(sizeloom_ui sizeloomres)

# Everything the program is made of, for the program, the tests and the benchmarks.
add_library(sizeloomlib INTERFACE)
target_link_libraries(sizeloomlib INTERFACE sizeloom_app)
