#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A line of a comparison of two texts.
struct DiffLine {
    enum class Kind { Kept, Removed, Added };

    Kind kind = Kind::Kept;
    /// Counted from 1: in the new text, or in the old one for a removed line.
    std::size_t number = 0;
    /// Without its line end.
    std::string text;

    bool operator==(const DiffLine&) const = default;
};

/// What changed from one text to the other, with up to two lines around each change; empty when nothing did. A text
/// without lines in common with the other, and one of many thousand lines, is shown as replaced.
std::vector<DiffLine> lineDiff(std::string_view before, std::string_view after);
