#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The parts of a request that decide whether it comes from our own page. A missing header is an empty text.
struct RequestMarks {
    std::string host;
    std::string origin;
    std::string token;
    std::string contentType;
};

/// Whether a request may be answered at all: it names this machine, so that no other site's name leads here, and if a
/// page sent it, that page is ours. Returns the reason for a refusal, else an empty text.
std::string_view refusalOf(const RequestMarks& marks, std::uint16_t port);

/// The same for requests that act or that listen to events: they need the session's token too.
std::string_view refusalOfAction(const RequestMarks& marks, std::uint16_t port, const std::string& token);

/// Whether the request declares its body as JSON, which no form of another site can do.
bool saysJson(std::string_view contentType);

/// 128 random bits as hexadecimal digits.
std::string randomToken();
