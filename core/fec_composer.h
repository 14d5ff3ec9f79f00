#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "core/fec_packet.h"
#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Which FEC packets a composer makes, as configuration interfaces pass it.
enum FecMode : std::int32_t { fecNone = 0, fecRow = 1, fecColumn = 2, fecBoth = 3 };

/// Columns x rows at most.
inline constexpr std::int32_t maxMatrixSize = 100;

/// Takes each finished FEC packet, on the thread that fed the media packet that finished it.
using FecPacketSink = std::function<void(std::shared_ptr<RtpPacket>)>;

/// Turns media packets into row and/or column FEC packets over a matrix of `columns` x `rows`.
///
/// The n-th packet fed in goes to column n mod columns: arrival places a packet, not its sequence
/// number. Columns start staggered, column c at row (rows - c mod rows) mod rows, so that one column
/// FEC packet leaves per row instead of a burst per matrix; what a column lets pass before that is
/// protected by rows alone. Media packets are read during the call and never kept; nothing is
/// allocated per media packet, one buffer and one ownership record per FEC packet.
///
/// A media packet that doesn't fit an FEC packet (isProtectable) is passed over: it takes no place in
/// the matrix and protects nothing. Not thread-safe: one streaming thread, kept apart from
/// construction and destruction by the owner.
class CFecComposer {
public:
    /// Throws mvn::ExceptionTemplate<CFecComposer, mvn::MorvaneException> for a mode outside 0 to 3 and
    /// std::runtime_error for a size: rows 4 to 20 in every mode but 0, columns 4 to 20 in mode 3 and
    /// 1 to 20 in modes 1 and 2, columns x rows at most 100 always. Mode 0 refuses negative sizes and
    /// more than 100 columns too.
    static void checkMatrix(std::int32_t mode, std::int32_t columns, std::int32_t rows);

    /// Draws the first sequence numbers from the runtime's `rand`, column stream first; then checks the
    /// matrix.
    CFecComposer(FecPacketSink sink, std::int32_t mode, std::int32_t columns, std::int32_t rows);
    /// Unfinished FEC packets are not handed on.
    ~CFecComposer() = default;

    CFecComposer(const CFecComposer&) = delete;
    CFecComposer& operator=(const CFecComposer&) = delete;

    /// One media packet: the row step, the column step, as the mode asks for, then advanceColumn.
    /// An exception of the sink passes through, and the column then stays.
    void protect(ConstRtpPacketView media);

    /// The single steps. A row whose FEC packet is missing (its sink threw, and the column stayed) protects
    /// nothing until the next row starts.
    void protectRow(ConstRtpPacketView media);
    void protectColumn(ConstRtpPacketView media);
    void advanceColumn();

private:
    void stepRow(ConstRtpPacketView media);
    void stepColumn(ConstRtpPacketView media);
    bool addToBoth(ConstRtpPacketView media);
    void countInColumn(std::size_t column);
    std::unique_ptr<RtpPacket> start(ConstRtpPacketView media, FecKind kind, std::uint16_t& sequence) const;
    void handOn(std::unique_ptr<RtpPacket>& slot);

    FecPacketSink sink_;
    std::int32_t mode_;
    std::int32_t columns_;
    std::int32_t rows_;
    std::unique_ptr<RtpPacket> rowPacket_;
    std::vector<std::unique_ptr<RtpPacket>> columnPackets_;
    std::int32_t currentColumn_ = 0;
    std::vector<std::uint32_t> columnCounts_;
    std::uint16_t columnSequence_;
    std::uint16_t rowSequence_;
};

}  // namespace mvrtpfec
