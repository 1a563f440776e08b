#include "companion/cli/utf8_output.h"

#include "companion/cli/windows/utf8_words.h"

#include <windows.h>

#include <filesystem>
#include <iostream>
#include <streambuf>

namespace {

/// Stands between a stream and its own buffer. A console gets characters, whatever its code page; anything else UTF-8.
class Utf8Buffer : public std::streambuf {
public:
    Utf8Buffer(std::ostream& stream, DWORD standardHandle)
        : stream(stream), target(stream.rdbuf(this)), handle(GetStdHandle(standardHandle)) {}
    ~Utf8Buffer() override { stream.rdbuf(target); }
    Utf8Buffer(const Utf8Buffer&) = delete;
    Utf8Buffer& operator=(const Utf8Buffer&) = delete;

protected:
    int_type overflow(int_type character) override {
        const char text = traits_type::to_char_type(character);
        return xsputn(&text, 1) == 1 ? character : traits_type::eof();
    }

    std::streamsize xsputn(const char* text, std::streamsize size) override {
        const std::string utf8 = utf8Words({text, static_cast<std::size_t>(size)});
        return (isConsole() ? writeToConsole(utf8) : writeToTarget(utf8)) ? size : 0;
    }

    int sync() override { return target->pubsync(); }

private:
    std::ostream& stream;
    std::streambuf* const target;
    const HANDLE handle;

    bool isConsole() const {
        DWORD mode = 0;
        return GetConsoleMode(handle, &mode) != 0;
    }

    bool writeToConsole(const std::string& utf8) const {
        const std::wstring wide = std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).wstring();
        DWORD written = 0;
        return WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) != 0;
    }

    bool writeToTarget(const std::string& utf8) const {
        const auto size = static_cast<std::streamsize>(utf8.size());
        return target->sputn(utf8.data(), size) == size;
    }
};

struct Utf8Output {
    Utf8Buffer output{std::cout, STD_OUTPUT_HANDLE};
    Utf8Buffer errors{std::cerr, STD_ERROR_HANDLE};
};

} // namespace

std::shared_ptr<void> showUtf8() {
    return std::make_shared<Utf8Output>();
}
