#pragma once

#include <optional>
#include <span>
#include <string_view>

/// The known word that a misspelt one most likely means; none when all differ in more than a third of their letters.
std::optional<std::string_view> nearestWord(std::string_view word, std::span<const std::string_view> known);
