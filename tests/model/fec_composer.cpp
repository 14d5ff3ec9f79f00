#include "tests/model/fec_composer.h"

#include <utility>

namespace mvrtpfec::model {

FecComposer::FecComposer(Sink sink, int mode, int columns, int rows, std::uint16_t columnSequence,
                         std::uint16_t rowSequence)
    : sink_(std::move(sink)),
      mode_(mode),
      columns_(columns),
      rows_(rows),
      columnSequence_(columnSequence),
      rowSequence_(rowSequence) {
    for (int c = 0; c < columns; ++c) {
        columnCounts_[c] = c % rows;
        columnPackets_[c] = nullptr;
    }
}

void FecComposer::protect(const Bytes& bytes) {
    const Packet media(bytes);
    if (media.isTruncated() || bytes.size() > 1400) return;
    if (mode_ == 1 || mode_ == 3) protectRow(media);
    if (mode_ == 2 || mode_ == 3) protectColumn(media);
    advanceColumn();
}

void FecComposer::protectRow(const Packet& media) {
    if (currentColumn_ == 0) {
        rowPacket_ = std::make_unique<Packet>(start(media, true, rowSequence_));
        ++rowSequence_;
    } else if (rowPacket_) {
        add(*rowPacket_, media);
    }
    if (currentColumn_ == columns_ - 1 && rowPacket_) handOn(rowPacket_);
}

void FecComposer::protectColumn(const Packet& media) {
    const int c = currentColumn_;
    if (columnCounts_[c] == 0) {
        columnPackets_[c] = std::make_unique<Packet>(start(media, false, columnSequence_));
        ++columnSequence_;
        if (rows_ > 1) columnCounts_[c] = 1;
    } else if (columnPackets_[c]) {
        add(*columnPackets_[c], media);
        ++columnCounts_[c];
        if (columnCounts_[c] == rows_) {
            columnCounts_[c] = 0;
            handOn(columnPackets_[c]);
        }
    } else {
        ++columnCounts_[c];
        if (columnCounts_[c] == rows_) columnCounts_[c] = 0;
    }
}

void FecComposer::advanceColumn() {
    ++currentColumn_;
    if (currentColumn_ == columns_) currentColumn_ = 0;
}

Packet FecComposer::start(const Packet& media, bool row, std::uint16_t sequence) const {
    Packet fec(Bytes(1416, 0));
    fec.length = static_cast<std::uint16_t>(media.length + 16);
    fec.buffer[0] = media.padding() ? 0xa0 : 0x80;
    fec.buffer[1] = media.marker() ? 0xe0 : 0x60;
    fec.write16(2, sequence);
    fec.write16(4, media.read16(4));
    fec.write16(6, media.read16(6));
    fec.write16(12, media.sequenceNumber());
    fec.write16(14, media.length);
    fec.buffer[16] = media.payloadType() | 0x80;
    fec.write16(20, media.read16(4));
    fec.write16(22, media.read16(6));
    fec.buffer[24] = row ? 0x40 : 0;
    fec.buffer[25] = static_cast<std::uint8_t>(row ? 1 : columns_);
    fec.buffer[26] = static_cast<std::uint8_t>(row ? columns_ : rows_);
    for (std::size_t i = 0; i < media.payloadLength(); ++i)
        fec.buffer.at(28 + i) = media.buffer.at(media.payloadOffset() + i);
    return fec;
}

void FecComposer::add(Packet& fec, const Packet& media) {
    if (media.marker()) fec.buffer[1] ^= 0x80;
    if (media.padding()) fec.buffer[0] ^= 0x20;
    fec.buffer[16] ^= media.payloadType();
    for (std::size_t i = 0; i < 4; ++i) fec.buffer[20 + i] ^= media.buffer[4 + i];
    fec.write16(14, fec.read16(14) ^ media.length);

    const std::size_t n = media.payloadLength();
    const std::size_t k = fec.length - 28u;
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint8_t byte = media.buffer.at(media.payloadOffset() + i);
        if (i < k)
            fec.buffer.at(28 + i) ^= byte;
        else
            fec.buffer.at(28 + i) = byte;
    }
    if (n > k) fec.length = static_cast<std::uint16_t>(fec.length + (n - k));
}

void FecComposer::handOn(std::unique_ptr<Packet>& slot) {
    const std::unique_ptr<Packet> finished = std::move(slot);
    sink_(finished->wireBytes());
}

}  // namespace mvrtpfec::model
