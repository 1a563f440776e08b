# GTest::gtest and GTest::gtest_main. An ordinary native build links the installed library; a sanitizer or a cross compiler
# needs the framework built its own way, from the sources that distributions ship as a package.
if(NOT BRIDGE_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  find_package(GTest REQUIRED)
  return()
endif()

# Beside the installed CMake, as Debian has it: <prefix>/share/cmake-N and <prefix>/src/googletest.
find_path(GOOGLETEST_SOURCE_DIR googletest/CMakeLists.txt
  HINTS ${CMAKE_ROOT}/../../src/googletest
  NO_CMAKE_FIND_ROOT_PATH REQUIRED
  DOC "The sources of GoogleTest, for sanitizer and cross builds")
set(INSTALL_GTEST OFF CACHE INTERNAL "")
set(BUILD_GMOCK OFF CACHE INTERNAL "")
set(gtest_disable_pthreads OFF CACHE INTERNAL "")
add_subdirectory(${GOOGLETEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
set_target_properties(gtest gtest_main PROPERTIES COMPILE_WARNING_AS_ERROR OFF)
# Others test the framework. Only its locks and threads have to be known to the thread sanitizer.
target_compile_options(gtest PRIVATE -O0)
if(BRIDGE_SANITIZE)
  target_compile_options(gtest PRIVATE -fno-sanitize=fuzzer-no-link,address,undefined)
endif()
