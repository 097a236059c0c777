# Every source under src/ except the program's entry point goes into the library,
# so tests and benchmarks link exactly the code the program runs.
file(GLOB_RECURSE SIZELOOM_SOURCES CONFIGURE_DEPENDS
  ${CMAKE_SOURCE_DIR}/src/*.cpp
  ${CMAKE_SOURCE_DIR}/src/*.h)
list(FILTER SIZELOOM_SOURCES EXCLUDE REGEX "/src/app/main\\.cpp$")

# Resources are compiled into an object library whose objects every program linking
# the library takes directly: from inside a static archive the linker would drop
# them, since nothing refers to them by name.
file(GLOB SIZELOOM_RESOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/*.qrc)
