// Prints the texts of all windows that are visible and not greyed, one control a line, "[x] " before those that are
// ticked: for tests of the installer's pages.

#include <windows.h>

#include <cstdio>

namespace {

BOOL CALLBACK printText(HWND window, LPARAM /*unused*/) {
    wchar_t text[1024];
    if (!IsWindowVisible(window) || !IsWindowEnabled(window) || InternalGetWindowText(window, text, 1024) == 0) {
        return TRUE;
    }
    char bytes[3 * 1024];
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
    const bool ticked = SendMessageW(window, BM_GETCHECK, 0, 0) == BST_CHECKED;
    std::printf("%s%s\n", ticked ? "[x] " : "", bytes);
    return TRUE;
}

BOOL CALLBACK printWindow(HWND window, LPARAM /*unused*/) {
    if (IsWindowVisible(window)) {
        printText(window, 0);
        EnumChildWindows(window, printText, 0);
    }
    return TRUE;
}

} // namespace

int main() {
    EnumWindows(printWindow, 0);
}
