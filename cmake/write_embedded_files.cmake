# Writes a C++ source with the contents of files, packed by gzip, for a function that HEADER declares:
# cmake -DOUTPUT=… -DFUNCTION=… -DHEADER=… "-DFILES=a;b" -P write_embedded_files.cmake
set(arrays "")
set(entries "")
set(number 0)
foreach(file IN LISTS FILES)
  # Without the file's name and time, so that the bytes only depend on its contents.
  execute_process(COMMAND gzip -9 -n -c ${file} OUTPUT_FILE ${OUTPUT}.gz COMMAND_ERROR_IS_FATAL ANY)
  file(READ ${OUTPUT}.gz hex HEX)
  file(SIZE ${file} size)
  string(REGEX REPLACE "(..)" "0x\\1, " bytes "${hex}")
  get_filename_component(name ${file} NAME)
  string(APPEND arrays "constexpr unsigned char ${FUNCTION}${number}[] = {${bytes}};\n")
  string(APPEND entries "        {\"${name}\", ${FUNCTION}${number}, ${size}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(REMOVE ${OUTPUT}.gz)
file(WRITE ${OUTPUT}
     "#include \"${HEADER}\"\n\nnamespace {\n\n${arrays}\n"
     "constexpr PackedFile ${FUNCTION}Packed[] = {\n${entries}};\n\n} // namespace\n\n"
     "const EmbeddedFiles& ${FUNCTION}() {\n"
     "    static const EmbeddedFiles files = unpack(${FUNCTION}Packed);\n    return files;\n}\n")
