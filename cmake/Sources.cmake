# Every source under src/ except the program's entry point goes into the library,
# so tests and benchmarks link exactly the code the program runs.
file(GLOB_RECURSE SIZELOOM_SOURCES CONFIGURE_DEPENDS
  ${CMAKE_SOURCE_DIR}/src/*.cpp
  ${CMAKE_SOURCE_DIR}/src/*.h
  ${CMAKE_SOURCE_DIR}/resources/*.qrc)
list(FILTER SIZELOOM_SOURCES EXCLUDE REGEX "/src/app/main\\.cpp$")
