#include "host/live/reception_log.h"

#include <utility>

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

constexpr auto untilToldAgain = 10s;
constexpr auto silence = 2s;
/// Some packets come twice on any network.
constexpr std::uint64_t manyRepeats = 100;

constexpr std::array texts{
    "the source began anew",
    "media packets were lost for good",
    "packets came twice",
    "datagrams were dropped by the system: nobody read them in time",
    "datagrams of the output were refused by the system",
};

double seconds(SteadyTime::duration time) {
    return std::chrono::duration<double>(time).count();
}

}  // namespace

void ReceptionLog::note(const ReceptionTotals& totals, SteadyTime now) {
    static_assert(texts.size() == eventCount);
    noteForeign(totals);
    noteMatrix(totals.reception.fec, now);
    noteSilence(totals.reception.media, now);
    noteCount(restarts, totals.repair.stream.restarts, 1, now);
    noteCount(losses, totals.repair.stream.lostForGood, 1, now);
    if (totals.repair.guard) noteCount(repeats, totals.repair.guard->repeated, manyRepeats, now);
    noteCount(overruns, totals.overrun, 1, now);
    noteCount(refusals, totals.refused, 1, now);
}

void ReceptionLog::noteForeign(const ReceptionTotals& totals) {
    const auto text = noMediaText(totals);
    if (text && !std::exchange(isForeignTold_, true)) log_.Log(1, "%s", text->c_str());
}

void ReceptionLog::noteMatrix(const FecFigures& fec, SteadyTime now) {
    if (fec.columns == 0) return;
    const std::string matrix = matrixText(fec);
    // The rows alone are heard first.
    if (std::exchange(seenMatrix_, matrix) != matrix) return;
    if (matrix == matrix_ || (matrixTold_ && now - *matrixTold_ < untilToldAgain)) return;
    if (!matrix_.empty()) matrixTold_ = now;
    log_.Log(2, "the matrix is %s%s%s", matrix.c_str(), matrix_.empty() ? "" : ", it was ", matrix_.c_str());
    matrix_ = matrix;
}

void ReceptionLog::noteSilence(std::uint64_t media, SteadyTime now) {
    if (media != media_) {
        if (isSilent_) log_.Log(1, "media come again after %.0f s", seconds(now - *newest_));
        isSilent_ = false;
        media_ = media;
        newest_ = now;
    } else if (newest_ && !isSilent_ && now - *newest_ >= silence) {
        isSilent_ = true;
        log_.Log(1, "no media come any more");
    }
}

/// Fewer than `least` at a time aren't worth a line.
void ReceptionLog::noteCount(Event event, std::uint64_t count, std::uint64_t least, SteadyTime now) {
    Told& told = told_[event];
    if (count < told.count + least || (told.when && now - *told.when < untilToldAgain)) return;
    log_.Log(1, "%s: %llu, %llu in all", texts[event], static_cast<unsigned long long>(count - told.count),
             static_cast<unsigned long long>(count));
    told = {count, now};
}

}  // namespace mvrtpfec
