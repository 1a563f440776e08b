#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What the documentation says about one of the bridge's messages.
struct MessageExplanation {
    std::string meaning;
    std::string remedy;
};

/// The tables of docs/troubleshooting.md, so that the pages and this program never disagree. Constant; any thread may
/// ask.
class MessageGuide {
public:
    static const MessageGuide& instance();

    /// The explanation of a message as the bridge logs it. Empty for an unknown one. Of a message with a REASON that
    /// has an explanation too, it is the reason's.
    MessageExplanation explain(std::string_view message) const;

private:
    struct Row {
        /// A star matches any text.
        std::string pattern;
        MessageExplanation explanation;
        bool hasReason = false;
    };

    std::vector<Row> rows;

    explicit MessageGuide(std::string_view page);
    const Row* find(std::string_view message) const;
};
