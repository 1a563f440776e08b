# Writes a C++ source with the bytes of files, for a function that HEADER declares:
# cmake -DOUTPUT=… -DFUNCTION=… -DHEADER=… "-DFILES=a;b" -P write_embedded_files.cmake
set(arrays "")
set(entries "")
set(number 0)
foreach(file IN LISTS FILES)
  file(READ ${file} hex HEX)
  string(LENGTH "${hex}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "(..)" "0x\\1, " bytes "${hex}")
  get_filename_component(name ${file} NAME)
  string(APPEND arrays "constexpr unsigned char ${FUNCTION}${number}[] = {${bytes}0};\n")
  string(APPEND entries
         "        {\"${name}\", std::string_view(reinterpret_cast<const char*>(${FUNCTION}${number}), ${size})},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT}
     "#include \"${HEADER}\"\n\nnamespace {\n\n${arrays}\n} // namespace\n\n"
     "const std::map<std::string, std::string_view>& ${FUNCTION}() {\n"
     "    static const std::map<std::string, std::string_view> files{\n${entries}    };\n    return files;\n}\n")
