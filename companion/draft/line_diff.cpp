#include "companion/draft/line_diff.h"

#include <algorithm>
#include <span>
#include <utility>

namespace {

using Lines = std::vector<std::string_view>;
using SomeLines = std::span<const std::string_view>;

constexpr std::size_t linesAround = 2;
/// Of the table of common lines; more would take long.
constexpr std::size_t mostCells = 16'000'000;

Lines linesOf(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// How many lines any two ends of the texts have in common, in order.
class CommonLines {
public:
    CommonLines(SomeLines before, SomeLines after) : width(after.size() + 1), counts((before.size() + 1) * width, 0) {
        for (std::size_t i = before.size(); i-- > 0;) {
            for (std::size_t j = after.size(); j-- > 0;) {
                at(i, j) = before[i] == after[j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
            }
        }
    }

    unsigned& at(std::size_t i, std::size_t j) { return counts[i * width + j]; }

private:
    std::size_t width;
    std::vector<unsigned> counts;
};

/// Makes the whole comparison, with every line that both texts have.
class Comparison {
public:
    Comparison(std::string_view before, std::string_view after) : before(linesOf(before)), after(linesOf(after)) {}

    std::vector<DiffLine> run() {
        const SomeLines from(before);
        const SomeLines to(after);
        const std::size_t shorter = std::min(from.size(), to.size());
        std::size_t begin = 0;
        while (begin < shorter && from[begin] == to[begin]) {
            ++begin;
        }
        std::size_t end = 0;
        while (end < shorter - begin && from[from.size() - 1 - end] == to[to.size() - 1 - end]) {
            ++end;
        }
        keep(begin);
        compare(from.subspan(begin, from.size() - begin - end), to.subspan(begin, to.size() - begin - end));
        keep(end);
        return std::move(result);
    }

private:
    const Lines before;
    const Lines after;
    std::size_t oldLine = 0;
    std::size_t newLine = 0;
    std::vector<DiffLine> result;

    void keep(std::size_t count) {
        for (; count > 0; --count, ++oldLine) {
            result.push_back({DiffLine::Kind::Kept, ++newLine, std::string(before[oldLine])});
        }
    }

    void remove() {
        result.push_back({DiffLine::Kind::Removed, oldLine + 1, std::string(before[oldLine])});
        ++oldLine;
    }

    void add() {
        result.push_back({DiffLine::Kind::Added, newLine + 1, std::string(after[newLine])});
        ++newLine;
    }

    void compare(SomeLines from, SomeLines to) {
        if ((from.size() + 1) * (to.size() + 1) > mostCells) {
            replace(from.size(), to.size());
            return;
        }
        CommonLines common(from, to);
        std::size_t i = 0;
        std::size_t j = 0;
        while (i < from.size() && j < to.size()) {
            if (from[i] == to[j]) {
                keep(1);
                ++i;
                ++j;
            } else if (common.at(i + 1, j) >= common.at(i, j + 1)) {
                remove();
                ++i;
            } else {
                add();
                ++j;
            }
        }
        replace(from.size() - i, to.size() - j);
    }

    void replace(std::size_t removed, std::size_t added) {
        for (; removed > 0; --removed) {
            remove();
        }
        for (; added > 0; --added) {
            add();
        }
    }
};

bool isChange(const DiffLine& line) {
    return line.kind != DiffLine::Kind::Kept;
}

} // namespace

std::vector<DiffLine> lineDiff(std::string_view before, std::string_view after) {
    const std::vector<DiffLine> all = Comparison(before, after).run();
    std::vector<DiffLine> shown;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto begin = all.begin() + static_cast<std::ptrdiff_t>(i - std::min(i, linesAround));
        const auto end = all.begin() + static_cast<std::ptrdiff_t>(std::min(i + linesAround + 1, all.size()));
        if (std::any_of(begin, end, isChange)) {
            shown.push_back(all[i]);
        }
    }
    return shown;
}
