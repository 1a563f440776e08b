# The target minizip, which reads and writes zip files, linked statically. A native build takes the installed library; a
# cross compiler needs the sources, which scripts/setup.sh fetches. The includer has found ZLIB::ZLIB.
add_library(minizip INTERFACE)
if(NOT CMAKE_CROSSCOMPILING)
  find_library(MINIZIP_ARCHIVE libminizip.a REQUIRED)
  target_link_libraries(minizip INTERFACE ${MINIZIP_ARCHIVE} ZLIB::ZLIB)
  return()
endif()

set(MINIZIP_SOURCE_DIR ${CMAKE_SOURCE_DIR}/build/third-party/minizip CACHE PATH "The sources of minizip, for cross builds")
if(NOT EXISTS ${MINIZIP_SOURCE_DIR}/zip.c)
  message(FATAL_ERROR "No minizip in ${MINIZIP_SOURCE_DIR}. scripts/setup.sh fetches it.")
endif()
add_library(minizip-objects STATIC
  ${MINIZIP_SOURCE_DIR}/zip.c ${MINIZIP_SOURCE_DIR}/unzip.c ${MINIZIP_SOURCE_DIR}/ioapi.c)
set_target_properties(minizip-objects PROPERTIES UNITY_BUILD OFF COMPILE_WARNING_AS_ERROR OFF)
target_compile_options(minizip-objects PRIVATE -w)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/minizip-include)
file(CREATE_LINK ${MINIZIP_SOURCE_DIR} ${CMAKE_BINARY_DIR}/minizip-include/minizip SYMBOLIC)
target_include_directories(minizip SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/minizip-include)
target_link_libraries(minizip INTERFACE minizip-objects ZLIB::ZLIB)
