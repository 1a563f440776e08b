#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// What of a request decides whether it comes from our own page. An empty text stands for a header that isn't there.
struct RequestMarks {
    std::string host;
    std::string origin;
    std::string token;
    std::string contentType;
};

/// Whether a request may be answered at all: it names this machine, so that no other site's name leads here, and if a
/// page sent it, that page is ours. Gives the reason of a refusal, else an empty text.
std::string_view refusalOf(const RequestMarks& marks, std::uint16_t port);

/// The same for what does something or tells what happens: the session's token is needed beside.
std::string_view refusalOfAction(const RequestMarks& marks, std::uint16_t port, const std::string& token);

/// Whether the body is said to be JSON, which no form of another site can send.
bool saysJson(std::string_view contentType);

/// 128 random bits as hexadecimal digits.
std::string randomToken();
