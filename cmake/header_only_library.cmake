# A library that consists of headers in FOLDER, as the target NAME. A cross compiler doesn't search the folders of the
# machine that it runs on, and must not see all that is there: so it gets a folder with a link to these headers alone.
function(header_only_library name folder header)
  find_path(${name}_parent ${folder}/${header} NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(include ${CMAKE_BINARY_DIR}/header-only/${name})
  file(MAKE_DIRECTORY ${include})
  file(CREATE_LINK ${${name}_parent}/${folder} ${include}/${folder} SYMBOLIC)
  add_library(${name} INTERFACE)
  target_include_directories(${name} SYSTEM INTERFACE ${include})
endfunction()
