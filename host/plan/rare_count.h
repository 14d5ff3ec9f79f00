#pragma once

#include <cstdint>

namespace mvrtpfec {

/// Counts something rare along a stream, and how it clusters: what it adds up to in each stretch of a
/// thousand packets.
class RareCount {
public:
    static constexpr std::uint64_t stretch = 1000;  ///< packets

    /// At a place not before the one named last.
    void add(std::uint64_t position);
    /// The total.
    std::uint64_t count() const { return total_ + inStretch_; }

    /// With 95 % certainty the mean number in `packets`, all that were looked at, is lower: Poisson's upper
    /// limit, in the form of Fay and Feuer for what comes in clusters. One not seen yet is taken for a
    /// cluster of `unseen`; with 1 and nothing counted the bound is 3.0. `rounds` says how often the same was
    /// looked at: the bound is that of one round.
    double upperBound(std::uint64_t packets, double unseen = 1, double rounds = 1) const;

private:
    void closeStretch();
    double variance(double stretches) const;

    std::uint64_t total_ = 0;  ///< of stretches that have ended
    double squares_ = 0;       ///< of their counts, summed
    std::uint64_t largest_ = 0;
    std::uint64_t place_ = 0;  ///< the stretch under way
    std::uint64_t inStretch_ = 0;
};

/// The number that a variable of the gamma distribution of this shape (at least 1) and of scale 1 exceeds
/// once in twenty.
double gammaUpper(double shape);

}  // namespace mvrtpfec
