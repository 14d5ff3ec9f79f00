#include "rtp_media/data/splice_command.h"

#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

namespace {

// ANSI/SCTE 35, table 7.
enum class CommandType : std::uint8_t {
    null = 0x00,
    schedule = 0x04,
    insert = 0x05,
    timeSignal = 0x06,
    bandwidthReservation = 0x07,
    privateCommand = 0xFF,
};

std::uint8_t readByte(BitReader& reader) {
    return static_cast<std::uint8_t>(reader.bits(8));
}

SpliceTime readTime(BitReader& reader) {
    if (!reader.flag()) {
        reader.skip(7);
        return std::nullopt;
    }
    reader.skip(6);
    return reader.longBits(33);
}

BreakDuration readBreakDuration(BitReader& reader) {
    BreakDuration duration;
    duration.autoReturn = reader.flag();
    reader.skip(6);
    duration.duration = reader.longBits(33);
    return duration;
}

/// Identifier and cancel indicator, with which every event begins; true when more follows.
bool readEventHead(BitReader& reader, SpliceEvent& event) {
    event.id = reader.bits(32);
    event.cancelled = reader.flag();
    reader.skip(7);
    return !event.cancelled;
}

void readEventTail(BitReader& reader, SpliceEvent& event, bool hasDuration) {
    if (hasDuration) event.breakDuration = readBreakDuration(reader);
    event.uniqueProgramId = static_cast<std::uint16_t>(reader.bits(16));
    event.availNumber = readByte(reader);
    event.availsExpected = readByte(reader);
}

SpliceInsert readInsert(BitReader& reader) {
    SpliceInsert insert;
    SpliceEvent& event = insert.event;
    if (!readEventHead(reader, event)) return insert;
    event.outOfNetwork = reader.flag();
    event.programSplice = reader.flag();
    const bool hasDuration = reader.flag();
    event.immediate = reader.flag();
    reader.skip(4);
    if (event.programSplice) {
        if (!event.immediate) event.time = readTime(reader);
    } else {
        event.components.resize(readByte(reader));
        for (auto& component : event.components) {
            component.tag = readByte(reader);
            if (!event.immediate) component.time = readTime(reader);
        }
    }
    readEventTail(reader, event, hasDuration);
    return insert;
}

SpliceEvent readScheduledEvent(BitReader& reader) {
    SpliceEvent event;
    if (!readEventHead(reader, event)) return event;
    event.outOfNetwork = reader.flag();
    event.programSplice = reader.flag();
    const bool hasDuration = reader.flag();
    reader.skip(5);
    if (event.programSplice) {
        event.utcTime = reader.bits(32);
    } else {
        event.components.resize(readByte(reader));
        for (auto& component : event.components) {
            component.tag = readByte(reader);
            component.utcTime = reader.bits(32);
        }
    }
    readEventTail(reader, event, hasDuration);
    return event;
}

SpliceSchedule readSchedule(BitReader& reader) {
    SpliceSchedule schedule;
    schedule.events.resize(readByte(reader));
    for (auto& event : schedule.events) event = readScheduledEvent(reader);
    return schedule;
}

PrivateCommand readPrivate(BitReader& reader) {
    PrivateCommand command;
    command.identifier = reader.bits(32);
    while (reader.remaining() > 0) command.bytes.push_back(readByte(reader));
    return command;
}

SpliceCommand readCommand(CommandType type, BitReader& reader) {
    switch (type) {
        case CommandType::null:
            return SpliceNull{};
        case CommandType::schedule:
            return readSchedule(reader);
        case CommandType::insert:
            return readInsert(reader);
        case CommandType::timeSignal:
            return TimeSignal{readTime(reader)};
        case CommandType::bandwidthReservation:
            return BandwidthReservation{};
        case CommandType::privateCommand:
            return readPrivate(reader);
    }
    throw SpliceInfoException("Unmanaged command type");
}

}  // namespace

std::size_t parseSpliceCommand(std::uint8_t type, std::span<const std::uint8_t> bytes,
                               SpliceCommand& command) {
    BitReader reader(bytes);
    command = readCommand(static_cast<CommandType>(type), reader);
    return reader.position() / 8;
}

}  // namespace mvrtpfec
