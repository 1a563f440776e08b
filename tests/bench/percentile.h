#pragma once

#include <algorithm>
#include <vector>

/// The value below which that share of the samples is.
inline double percentile(std::vector<double> samples, double share) {
    if (samples.empty()) {
        return 0;
    }
    const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(samples.size() - 1));
    std::nth_element(samples.begin(), samples.begin() + rank, samples.end());
    return samples[static_cast<std::size_t>(rank)];
}
