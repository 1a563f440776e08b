#include "text/ascii.h"

std::string lowerCased(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), toLower);
    return lower;
}

std::string upperCased(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), toUpper);
    return upper;
}
