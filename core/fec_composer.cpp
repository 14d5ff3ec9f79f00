#include "core/fec_composer.h"

#include <stdexcept>
#include <utility>

#include "platform/process/runtime_rand.h"
#include "support/errors.h"

namespace mvrtpfec {

namespace {

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
    checkMatrix(mode_, columns_, rows_);
    const auto count = static_cast<std::size_t>(columns_);
    columnPackets_.resize(count);
    columnCounts_.resize(count);
    if (rows_ == 0) return;
    const auto blockSize = static_cast<std::size_t>(rows_);
    for (std::size_t c = 0; c < count; ++c) columnCounts_[c] = static_cast<std::uint32_t>(c % blockSize);
}

void CFecComposer::checkMatrix(std::int32_t mode, std::int32_t columns, std::int32_t rows) {
    if (isOutside(mode, fecNone, fecBoth))
        throw mvn::ExceptionTemplate<CFecComposer, mvn::MorvaneException>("invalid FEC mode");
    // Rows are checked in row mode too, although row FEC doesn't use them.
    if (mode != fecNone && isOutside(rows, minSide, maxSide))
        throw std::runtime_error("number of rows must be between 4 and 20");
    if (mode == fecBoth && isOutside(columns, minSide, maxSide))
        throw std::runtime_error("number of columns must be between 4 and 20 in this mode");
    if ((mode == fecRow || mode == fecColumn) && isOutside(columns, 1, maxSide))
        throw std::runtime_error("number of columns must be between 1 and 20 in this mode");
    const bool unusable = rows < 0 || isOutside(columns, 0, maxMatrixSize);
    if (unusable || std::int64_t{columns} * rows > maxMatrixSize)
        throw std::runtime_error("invalid number of columns and rows");
}

void CFecComposer::protect(ConstRtpPacketView media) {
    if (!isProtectable(media)) return;
    if (!addToBoth(media)) {
        if (mode_ == fecRow || mode_ == fecBoth) stepRow(media);
        if (mode_ == fecColumn || mode_ == fecBoth) stepColumn(media);
    }
    advanceColumn();
}

/// A packet inside a row and a column under way goes into both in one pass. One that ends its row doesn't:
/// the row's sink may throw before the column has its turn.
bool CFecComposer::addToBoth(ConstRtpPacketView media) {
    const auto c = static_cast<std::size_t>(currentColumn_);
    if (mode_ != fecBoth || c == 0 || currentColumn_ == columns_ - 1) return false;
    if (!rowPacket_ || !columnPackets_[c] || columnCounts_[c] == 0) return false;
    addToFecPackets(*rowPacket_, *columnPackets_[c], media);
    countInColumn(c);
    return true;
}

void CFecComposer::protectRow(ConstRtpPacketView media) {
    if (isProtectable(media)) stepRow(media);
}

void CFecComposer::protectColumn(ConstRtpPacketView media) {
    if (isProtectable(media) && !columnPackets_.empty()) stepColumn(media);
}

void CFecComposer::stepRow(ConstRtpPacketView media) {
    if (currentColumn_ == 0)
        rowPacket_ = start(media, FecKind::row, rowSequence_);
    else if (rowPacket_)
        addToFecPacket(*rowPacket_, media);
    if (currentColumn_ == columns_ - 1 && rowPacket_) handOn(rowPacket_);
}

void CFecComposer::stepColumn(ConstRtpPacketView media) {
    const auto c = static_cast<std::size_t>(currentColumn_);
    std::unique_ptr<RtpPacket>& packet = columnPackets_[c];
    if (columnCounts_[c] == 0) {
        packet = start(media, FecKind::column, columnSequence_);
        if (rows_ > 1) columnCounts_[c] = 1;
        return;
    }
    // A column without a packet is still waiting for its staggered start.
    if (packet) addToFecPacket(*packet, media);
    countInColumn(c);
}

void CFecComposer::countInColumn(std::size_t column) {
    std::uint32_t& count = columnCounts_[column];
    if (++count < static_cast<std::uint32_t>(rows_)) return;
    count = 0;
    if (columnPackets_[column]) handOn(columnPackets_[column]);
}

void CFecComposer::advanceColumn() {
    if (++currentColumn_ >= columns_) currentColumn_ = 0;
}

std::unique_ptr<RtpPacket> CFecComposer::start(ConstRtpPacketView media, FecKind kind,
                                               std::uint16_t& sequence) const {
    const bool row = kind == FecKind::row;
    auto packet = std::make_unique<RtpPacket>(RtpPacket::Unwritten{});
    startFecPacket(*packet, media, kind, static_cast<std::uint8_t>(row ? 1 : columns_),
                   static_cast<std::uint8_t>(row ? columns_ : rows_));
    writeBigEndian16(packet->view.data + 2, sequence++);
    return packet;
}

void CFecComposer::handOn(std::unique_ptr<RtpPacket>& slot) {
    sink_(std::shared_ptr<RtpPacket>(std::move(slot)));
}

}  // namespace mvrtpfec
