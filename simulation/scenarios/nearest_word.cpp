#include "simulation/scenarios/nearest_word.h"

#include "text/ascii.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace {

/// How many letters must change, or change places with their neighbours, to turn one word into the other. Case doesn't
/// count.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast = std::exchange(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (sameLetter(a[i - 1], b[j - 1]) ? 0 : 1);
            row[j] = std::min({replaced, row[j - 1] + 1, last[j] + 1});
            if (i > 1 && j > 1 && sameLetter(a[i - 1], b[j - 2]) && sameLetter(a[i - 2], b[j - 1])) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row.back();
}

} // namespace

std::optional<std::string_view> nearestWord(std::string_view word, std::span<const std::string_view> known) {
    std::optional<std::string_view> nearest;
    std::size_t least = 0;
    for (const std::string_view candidate : known) {
        const std::size_t limit = std::max<std::size_t>(1, candidate.size() / 3);
        const std::size_t lengths = std::max(word.size(), candidate.size()) - std::min(word.size(), candidate.size());
        // A word that is so much longer or shorter can't be near.
        if (lengths > limit) {
            continue;
        }
        const std::size_t letters = distance(word, candidate);
        if (letters <= limit && (!nearest || letters < least)) {
            nearest = candidate;
            least = letters;
        }
    }
    return nearest;
}
