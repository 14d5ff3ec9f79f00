#include "host/plan/trial_figures.h"

#include <algorithm>

namespace mvrtpfec {

namespace {

double shareOf(std::uint64_t count, std::uint64_t sent) {
    return sent == 0 ? 0 : static_cast<double>(count) / static_cast<double>(sent);
}

double boundOf(const RareCount& count, const TrialFigures& trial, double unseen) {
    const double sent = static_cast<double>(trial.sent) / trial.rounds;
    return sent == 0 ? 1 : std::min(1.0, count.upperBound(trial.sent, unseen, trial.rounds) / sent);
}

}  // namespace

void ResidualLosses::add(std::uint64_t position) {
    packets_.add(position);
    if (position < faultEnd_) return;
    faults_.add(position);
    faultEnd_ = position + packetsOfFault;
}

double TrialFigures::residualLoss() const {
    return shareOf(lost.packets().count(), sent);
}

double TrialFigures::residualLossBound() const {
    return boundOf(lost.packets(), *this, meanBurst);
}

double TrialFigures::faultRate() const {
    return shareOf(lost.faults().count(), sent);
}

double TrialFigures::faultRateBound() const {
    return boundOf(lost.faults(), *this, std::max(1.0, meanBurst / ResidualLosses::packetsOfFault));
}

}  // namespace mvrtpfec
