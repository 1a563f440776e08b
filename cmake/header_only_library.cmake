# A library that consists of headers in FOLDER, as the target NAME: one that is installed, or that scripts/setup.sh has
# fetched to build/third-party. A cross compiler doesn't search the folders of the machine that it runs on, and must not
# see everything there, so it gets a folder with a link to these headers alone.
function(header_only_library name folder header)
  find_path(${name}_parent ${folder}/${header} HINTS ${CMAKE_SOURCE_DIR}/build/third-party NO_CMAKE_FIND_ROOT_PATH)
  if(NOT ${name}_parent)
    message(FATAL_ERROR "${folder}/${header} is missing. \"scripts/setup.sh --build\" installs what the build needs.")
  endif()
  set(include ${CMAKE_BINARY_DIR}/header-only/${name})
  file(MAKE_DIRECTORY ${include})
  file(CREATE_LINK ${${name}_parent}/${folder} ${include}/${folder} SYMBOLIC)
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${include})
endfunction()
