#include "companion/page/open_browser.h"

#include <shellapi.h>
#include <windows.h>

void openBrowser(const std::string& address) {
    // An address is ASCII. A failure leaves the printed address.
    ShellExecuteA(nullptr, "open", address.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}
