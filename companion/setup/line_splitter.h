#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

/// Cuts a stream of text into lines. One thread.
class LineSplitter {
public:
    explicit LineSplitter(std::function<void(const std::string& line)> onLine) : onLine(std::move(onLine)) {}

    void add(std::string_view text) {
        unfinished += text;
        for (std::size_t end = unfinished.find('\n'); end != std::string::npos; end = unfinished.find('\n')) {
            const bool hasReturn = end > 0 && unfinished[end - 1] == '\r';
            onLine(unfinished.substr(0, end - (hasReturn ? 1 : 0)));
            unfinished.erase(0, end + 1);
        }
    }

    /// The stream has ended, perhaps in the middle of a line.
    void end() {
        if (!unfinished.empty()) {
            onLine(std::exchange(unfinished, {}));
        }
    }

private:
    std::function<void(const std::string& line)> onLine;
    std::string unfinished;
};
