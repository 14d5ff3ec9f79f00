#include "tests/guard/sender.h"

#include <algorithm>
#include <cstring>

namespace mvrtpfec::testing {

namespace {

std::size_t hashOf(Bytes bytes) {
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace

std::int64_t SentLog::add(Bytes packet) {
    ids_.try_emplace(hashOf(packet), count_);
    return count_++;
}

std::int64_t SentLog::find(Bytes packet) const {
    const auto found = ids_.find(hashOf(packet));
    return found == ids_.end() ? unknown : found->second;
}

Sender::Sender(const Matrix& matrix, const Source& source, SentLog& log, Wire wire)
    : source_(source),
      log_(log),
      wire_(std::move(wire)),
      random_(source.seed),
      number_(source.firstNumber),
      timestamp_(static_cast<std::uint32_t>(random_.bits())),
      composerB_(sinkOf(ReceiverInput::rowFec, 31000), fecRow, matrix.columns,
                 std::max<std::uint8_t>(matrix.rows, 4)) {
    if (matrix.rows != 0)
        composerA_.emplace(sinkOf(ReceiverInput::columnFec, 700), fecColumn, matrix.columns, matrix.rows);
}

FecPacketSink Sender::sinkOf(ReceiverInput port, std::uint16_t firstNumber) {
    return [this, port, next = firstNumber](const std::shared_ptr<RtpPacket>& fec) mutable {
        writeBigEndian16(fec->view.data + 2, next++);
        const auto back = static_cast<std::uint16_t>(number_ - 1 - protectedRange(fec->view).base);
        wire_({port, lastId_ - back, {fec->view.data, fec->view.data + fec->view.length}});
    };
}

WirePacket Sender::makeMedia() {
    const std::size_t length = source_.length != 0 ? source_.length : 12 + random_.below(1389);
    std::vector<std::uint8_t> bytes(length + sizeof(std::uint64_t));
    for (std::size_t i = 0; i < length; i += sizeof(std::uint64_t)) {
        const std::uint64_t word = random_.bits();
        std::memcpy(&bytes[i], &word, sizeof word);
    }
    bytes.resize(length);
    bytes[0] = versionTwo;
    bytes[1] = static_cast<std::uint8_t>((bytes[1] & markerBit) | mediaPayloadType);
    writeBigEndian16(&bytes[2], number_++);
    writeBigEndian32(&bytes[4], timestamp_ += 300);
    writeBigEndian32(&bytes[8], source_.ssrc);
    lastId_ = log_.add(bytes);
    return {ReceiverInput::media, lastId_, std::move(bytes)};
}

void Sender::send(int packets) {
    for (int i = 0; i < packets; ++i) {
        const WirePacket media = makeMedia();
        wire_(media);
        const ConstRtpPacketView view{media.bytes.data(), static_cast<std::uint16_t>(media.bytes.size())};
        if (composerA_) composerA_->protect(view);
        composerB_.protect(view);
    }
}

void Sender::sendBare(int packets) {
    for (int i = 0; i < packets; ++i) wire_(makeMedia());
}

}  // namespace mvrtpfec::testing
