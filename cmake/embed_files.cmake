# Builds files into a target: FUNCTION, which HEADER declares, gives their contents by name.
function(embed_files target function header)
  set(output ${CMAKE_CURRENT_BINARY_DIR}/${function}.cpp)
  set(script ${CMAKE_SOURCE_DIR}/cmake/write_embedded_files.cmake)
  add_custom_command(
    OUTPUT ${output}
    COMMAND ${CMAKE_COMMAND} -DOUTPUT=${output} -DFUNCTION=${function} -DHEADER=${header} "-DFILES=${ARGN}" -P ${script}
    DEPENDS ${ARGN} ${script}
    VERBATIM)
  target_sources(${target} PRIVATE ${output})
endfunction()
