#include "companion/page/request_checks.h"

#include "hid/hex_text.h"

#include <array>
#include <random>

namespace {

constexpr std::uint16_t httpPort = 80;
constexpr std::string_view jsonType = "application/json";

bool isOurHost(std::string_view host, std::uint16_t port) {
    for (const std::string_view name : {"127.0.0.1", "localhost"}) {
        if (host == std::string(name).append(":").append(std::to_string(port)) || (port == httpPort && host == name)) {
            return true;
        }
    }
    return false;
}

bool isOurOrigin(std::string_view origin, std::uint16_t port) {
    constexpr std::string_view scheme = "http://";
    return origin.starts_with(scheme) && isOurHost(origin.substr(scheme.size()), port);
}

/// Takes the same time wherever the texts differ.
bool sameSecret(std::string_view given, std::string_view secret) {
    unsigned difference = given.size() == secret.size() ? 0 : 1;
    for (std::size_t i = 0; i < secret.size(); ++i) {
        const char letter = i < given.size() ? given[i] : '\0';
        difference |= static_cast<unsigned char>(letter) ^ static_cast<unsigned>(static_cast<unsigned char>(secret[i]));
    }
    return difference == 0;
}

} // namespace

std::string_view refusalOf(const RequestMarks& marks, std::uint16_t port) {
    if (!isOurHost(marks.host, port)) {
        return "this page answers at 127.0.0.1 and localhost only";
    }
    if (!marks.origin.empty() && !isOurOrigin(marks.origin, port)) {
        return "a page from another origin can't do this";
    }
    return "";
}

std::string_view refusalOfAction(const RequestMarks& marks, std::uint16_t port, const std::string& token) {
    if (const std::string_view refusal = refusalOf(marks, port); !refusal.empty()) {
        return refusal;
    }
    return sameSecret(marks.token, token) ? "" : "the token of this session is missing or wrong";
}

bool saysJson(std::string_view contentType) {
    return contentType == jsonType || contentType.starts_with(std::string(jsonType) + ';');
}

std::string randomToken() {
    std::random_device random;
    std::array<std::uint8_t, 16> bytes{};
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random() & 0xFF);
    }
    return hexText(bytes);
}
