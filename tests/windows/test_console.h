#pragma once

#include "tests/support/wait_until.h"
#include "tests/windows/child_process.h"

#include <windows.h>

#include <chrono>
#include <string>
#include <string_view>

/// The console of the test program, as its user would see it and type into it.
class TestConsole {
public:
    TestConsole() { clear(); }
    ~TestConsole() {
        CloseHandle(input);
        CloseHandle(output);
    }
    TestConsole(const TestConsole&) = delete;
    TestConsole& operator=(const TestConsole&) = delete;

    void clear() const {
        const CONSOLE_SCREEN_BUFFER_INFO info = buffer();
        const DWORD cells = static_cast<DWORD>(info.dwSize.X) * static_cast<DWORD>(info.dwSize.Y);
        DWORD count = 0;
        FillConsoleOutputCharacterA(output, ' ', cells, COORD{0, 0}, &count);
        SetConsoleCursorPosition(output, COORD{0, 0});
        FlushConsoleInputBuffer(input);
    }

    /// The lines that aren't blank, without the blanks behind their text.
    std::string screen() const {
        const CONSOLE_SCREEN_BUFFER_INFO info = buffer();
        std::string text;
        for (SHORT row = 0; row < info.dwSize.Y; ++row) {
            std::string line(static_cast<std::size_t>(info.dwSize.X), ' ');
            DWORD count = 0;
            ReadConsoleOutputCharacterA(output, line.data(), static_cast<DWORD>(line.size()), COORD{0, row}, &count);
            line.resize(line.find_last_not_of(' ') + 1);
            text += line.empty() ? "" : line + "\n";
        }
        return text;
    }

    /// Whatever code page the console has.
    bool shows(const std::wstring& text) const {
        std::wstring cells(static_cast<std::size_t>(buffer().dwSize.X) * 3, L' ');
        DWORD count = 0;
        ReadConsoleOutputCharacterW(output, cells.data(), static_cast<DWORD>(cells.size()), COORD{0, 0}, &count);
        return cells.find(text) != std::wstring::npos;
    }

    bool shows(const std::string& text) const { return screen().find(text) != std::string::npos; }

    bool waitFor(const std::string& text) const {
        return waitUntil([&] { return shows(text); }, std::chrono::seconds(60));
    }

    void type(std::string_view keys) const {
        for (const char key : keys) {
            INPUT_RECORD record{};
            record.EventType = KEY_EVENT;
            record.Event.KeyEvent.bKeyDown = TRUE;
            record.Event.KeyEvent.wRepeatCount = 1;
            record.Event.KeyEvent.uChar.AsciiChar = key;
            record.Event.KeyEvent.wVirtualKeyCode = key == '\r' ? static_cast<WORD>(VK_RETURN) : WORD{0};
            DWORD count = 0;
            WriteConsoleInputA(input, &record, 1, &count);
        }
    }

    Streams streams() const { return {input, output, output}; }

    const HANDLE input = open("CONIN$");
    const HANDLE output = open("CONOUT$");

private:
    static HANDLE open(const char* device) {
        return CreateFileA(device, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    }

    CONSOLE_SCREEN_BUFFER_INFO buffer() const {
        CONSOLE_SCREEN_BUFFER_INFO info{};
        GetConsoleScreenBufferInfo(output, &info);
        return info;
    }
};
