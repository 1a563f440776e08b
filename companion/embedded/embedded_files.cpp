#include "companion/embedded/embedded_files.h"

#include <zlib.h>

#include <stdexcept>

namespace {

// Added to the window's size, it makes zlib expect gzip's header and check sum.
constexpr int gzipFormat = 16;

std::string unpack(const PackedFile& file) {
    std::string contents(file.size, '\0');
    z_stream stream{};
    // zlib takes its input as a pointer to non-const, and leaves it as it is.
    stream.next_in = const_cast<unsigned char*>(file.packed.data());
    stream.avail_in = static_cast<unsigned>(file.packed.size());
    stream.next_out = reinterpret_cast<unsigned char*>(contents.data());
    stream.avail_out = static_cast<unsigned>(contents.size());
    if (inflateInit2(&stream, MAX_WBITS + gzipFormat) != Z_OK) {
        throw std::logic_error("zlib doesn't start");
    }
    const int result = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    if (result != Z_STREAM_END || stream.total_out != file.size) {
        throw std::logic_error(std::string("the embedded file is damaged: ") + file.name);
    }
    return contents;
}

} // namespace

EmbeddedFiles unpack(std::span<const PackedFile> files) {
    EmbeddedFiles unpacked;
    for (const PackedFile& file : files) {
        unpacked[file.name] = unpack(file);
    }
    return unpacked;
}
