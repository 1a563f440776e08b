# Settings of the programs in the packages. Two builds of one commit give the same bytes, whatever folder they are in:
# debug information and __FILE__ name paths below the source folder, and the linker writes no clock into an executable.
# Code that nothing calls is left out.
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
if(WIN32)
  add_link_options(-Wl,--no-insert-timestamp)
else()
  add_compile_options(-ffunction-sections -fdata-sections -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  # The C++ library is linked statically, so that only the C library's version decides where the programs run.
  add_link_options(-Wl,--gc-sections -static-libstdc++ -static-libgcc -Wl,-z,relro,-z,now)
endif()
