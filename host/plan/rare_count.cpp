#include "host/plan/rare_count.h"

#include <algorithm>
#include <cmath>

namespace mvrtpfec {

namespace {

constexpr double certainty = 0.95;
constexpr double certaintyNormal = 1.6448536269514722;  ///< of the normal distribution

/// The share of the gamma distribution below x, by its series.
double gammaShare(double shape, double x) {
    double term = std::exp(shape * std::log(x) - x - std::lgamma(shape + 1));
    double sum = term;
    for (double n = 1; term > sum * 1e-12; ++n) sum += term *= x / (shape + n);
    return sum;
}

}  // namespace

double gammaUpper(double shape) {
    // Wilson and Hilferty's, exact to five digits from a hundred on.
    const double root = 1 - 1 / (9 * shape) + certaintyNormal / (3 * std::sqrt(shape));
    const double guess = shape * root * root * root;
    if (shape > 100) return guess;
    double low = guess / 2;
    double high = guess * 2;
    while (high - low > guess * 1e-9) {
        const double middle = (low + high) / 2;
        (gammaShare(shape, middle) < certainty ? low : high) = middle;
    }
    return low;
}

void RareCount::add(std::uint64_t position) {
    if (position / stretch != place_) closeStretch();
    place_ = position / stretch;
    ++inStretch_;
}

void RareCount::closeStretch() {
    const auto count = static_cast<double>(inStretch_);
    total_ += inStretch_;
    squares_ += count * count;
    largest_ = std::max(largest_, inStretch_);
    inStretch_ = 0;
}

/// Of the total, from that of the stretches.
double RareCount::variance(double stretches) const {
    const auto total = static_cast<double>(total_);
    if (stretches < 2) return squares_;
    return std::max(0.0, squares_ - total * total / stretches) * stretches / (stretches - 1);
}

double RareCount::upperBound(std::uint64_t packets, double unseen, double rounds) const {
    RareCount closed = *this;
    closed.closeStretch();
    const double weight = std::max(unseen, static_cast<double>(closed.largest_));
    const double stretches = std::ceil(static_cast<double>(packets) / static_cast<double>(stretch));
    const double sum = static_cast<double>(closed.total_) / rounds + weight;
    const double spread = closed.variance(stretches) / rounds + weight * weight;
    return spread / sum * gammaUpper(sum * sum / spread);
}

}  // namespace mvrtpfec
