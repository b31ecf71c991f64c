# Warnings for our own targets only; third-party headers come in as system includes.
function(zentrail_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
endfunction()

# One test executable per folder of tests/: fewer, larger binaries keep the build and the CI run short.
# Usage: zentrail_test_folder(NAME LIBS lib...)
function(zentrail_test_folder name)
  cmake_parse_arguments(ARG "QT" "" "LIBS" ${ARGN})
  file(GLOB _sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT _sources)
    return()
  endif()
  add_executable(${name} ${_sources})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gmock)
  zentrail_warnings(${name})
  target_compile_definitions(${name} PRIVATE ZENTRAIL_TEST_DATA_DIR="${CMAKE_SOURCE_DIR}/tests/data"
                                             ZENTRAIL_BINARY_DIR="${CMAKE_BINARY_DIR}")
  # Each test case runs as its own ctest entry so that failures are named; discovery happens at
  # ctest time so the build never needs a display or the test environment.
  include(GoogleTest)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
                       PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" LABELS "${name}")
endfunction()
