#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "tests/model/packet.h"

namespace mvrtpfec::model {

/// The composer, one step after the other. It checks no arguments: they must be those of a matrix that
/// can be built. The first sequence numbers are given instead of drawn.
class FecComposer {
public:
    using Sink = std::function<void(Bytes)>;

    FecComposer(Sink sink, int mode, int columns, int rows, std::uint16_t columnSequence,
                std::uint16_t rowSequence);

    void protect(const Bytes& media);

private:
    void protectRow(const Packet& media);
    void protectColumn(const Packet& media);
    void advanceColumn();

    Packet start(const Packet& media, bool row, std::uint16_t sequence) const;
    static void add(Packet& fec, const Packet& media);
    void handOn(std::unique_ptr<Packet>& slot);

    Sink sink_;
    int mode_;
    int columns_;
    int rows_;
    std::unique_ptr<Packet> rowPacket_;
    std::map<int, std::unique_ptr<Packet>> columnPackets_;
    int currentColumn_ = 0;
    std::map<int, int> columnCounts_;
    std::uint16_t columnSequence_;
    std::uint16_t rowSequence_;
};

}  // namespace mvrtpfec::model
