# What an executable for Windows says about itself: icon, version, and how Windows should run it.
function(add_windows_resources program description)
  set(sources ${CMAKE_SOURCE_DIR}/packaging/windows)
  set(icon ${sources}/VantrelBridgeHID.ico)
  set(manifest ${CMAKE_CURRENT_BINARY_DIR}/${program}.manifest)
  set(resources ${CMAKE_CURRENT_BINARY_DIR}/${program}.rc)
  configure_file(${sources}/program.manifest.in ${manifest} @ONLY)
  configure_file(${sources}/program.rc.in ${resources} @ONLY)
  target_sources(${program} PRIVATE ${resources})
  # CMake doesn't know what windres reads.
  set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS "${icon};${manifest}")
endfunction()
