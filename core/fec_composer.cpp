#include "core/fec_composer.h"

#include <stdexcept>
#include <utility>

#include "platform/runtime_rand.h"
#include "support/errors.h"

namespace mvrtpfec {

namespace {

constexpr std::int64_t maxMatrixSize = 100;
constexpr std::int32_t maxSide = 20;
constexpr std::int32_t minSide = 4;

bool isOutside(std::int32_t value, std::int32_t low, std::int32_t high) {
    return value < low || value > high;
}

std::uint16_t firstSequenceNumber() {
    return static_cast<std::uint16_t>(platform::runtimeRand());
}

}  // namespace

CFecComposer::CFecComposer(FecPacketSink sink, std::int32_t mode, std::int32_t columns, std::int32_t rows)
    : sink_(std::move(sink)),
      mode_(mode),
      columns_(columns),
      rows_(rows),
      columnSequence_(firstSequenceNumber()),
      rowSequence_(firstSequenceNumber()) {
    checkMatrix();
    const auto count = static_cast<std::size_t>(columns_);
    columnPackets_.resize(count);
    columnCounts_.resize(count);
    if (rows_ == 0) return;
    const auto blockSize = static_cast<std::size_t>(rows_);
    for (std::size_t c = 0; c < count; ++c) columnCounts_[c] = static_cast<std::uint32_t>(c % blockSize);
}

void CFecComposer::checkMatrix() const {
    if (isOutside(mode_, fecNone, fecBoth))
        throw mvn::ExceptionTemplate<CFecComposer, mvn::MorvaneException>("invalid FEC mode");
    // Rows are checked in row mode too, although row FEC doesn't use them.
    if (mode_ != fecNone && isOutside(rows_, minSide, maxSide))
        throw std::runtime_error("number of rows must be between 4 and 20");
    if (mode_ == fecBoth && isOutside(columns_, minSide, maxSide))
        throw std::runtime_error("number of columns must be between 4 and 20 in this mode");
    if ((mode_ == fecRow || mode_ == fecColumn) && isOutside(columns_, 1, maxSide))
        throw std::runtime_error("number of columns must be between 1 and 20 in this mode");
    const bool unusable = rows_ < 0 || isOutside(columns_, 0, static_cast<std::int32_t>(maxMatrixSize));
    if (unusable || std::int64_t{columns_} * rows_ > maxMatrixSize)
        throw std::runtime_error("invalid number of columns and rows");
}

void CFecComposer::protect(ConstRtpPacketView media) {
    if (!isProtectable(media)) return;
    if (mode_ == fecRow || mode_ == fecBoth) protectRow(media);
    if (mode_ == fecColumn || mode_ == fecBoth) protectColumn(media);
    advanceColumn();
}

void CFecComposer::protectRow(ConstRtpPacketView media) {
    if (!isProtectable(media)) return;
    if (currentColumn_ == 0)
        rowPacket_ = start(media, FecKind::row, rowSequence_);
    else if (rowPacket_)
        addToFecPacket(*rowPacket_, media);
    if (currentColumn_ == columns_ - 1 && rowPacket_) handOn(rowPacket_);
}

void CFecComposer::protectColumn(ConstRtpPacketView media) {
    if (!isProtectable(media) || columnPackets_.empty()) return;
    const auto c = static_cast<std::size_t>(currentColumn_);
    std::uint32_t& count = columnCounts_[c];
    std::unique_ptr<RtpPacket>& packet = columnPackets_[c];

    if (count == 0) {
        packet = start(media, FecKind::column, columnSequence_);
        if (rows_ > 1) count = 1;
        return;
    }
    // A column without a packet is still waiting for its staggered start.
    if (packet) addToFecPacket(*packet, media);
    if (++count < static_cast<std::uint32_t>(rows_)) return;
    count = 0;
    if (packet) handOn(packet);
}

void CFecComposer::advanceColumn() {
    if (++currentColumn_ >= columns_) currentColumn_ = 0;
}

std::unique_ptr<RtpPacket> CFecComposer::start(ConstRtpPacketView media, FecKind kind,
                                               std::uint16_t& sequence) const {
    const bool row = kind == FecKind::row;
    auto packet = std::make_unique<RtpPacket>();
    startFecPacket(*packet, media, kind, static_cast<std::uint8_t>(row ? 1 : columns_),
                   static_cast<std::uint8_t>(row ? columns_ : rows_));
    writeBigEndian16(packet->view.data + 2, sequence++);
    return packet;
}

void CFecComposer::handOn(std::unique_ptr<RtpPacket>& slot) {
    sink_(std::shared_ptr<RtpPacket>(std::move(slot)));
}

}  // namespace mvrtpfec
