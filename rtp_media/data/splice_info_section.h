#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <variant>
#include <vector>

#include "support/errors.h"

namespace mvrtpfec {

struct SpliceInfoSection;
/// A section that can't be parsed.
using SpliceInfoException = mvn::ExceptionTemplate<SpliceInfoSection>;

// The parts of a section, by ANSI/SCTE 35. Times in ticks of 90 kHz.

/// 9.8.1; none when the time isn't specified.
using SpliceTime = std::optional<std::uint64_t>;

/// 9.8.2
struct BreakDuration {
    bool autoReturn = false;
    std::uint64_t duration = 0;
};

/// What one event of splice_schedule and splice_insert says.
struct SpliceEvent {
    /// One elementary stream, where an event isn't of the whole program.
    struct Component {
        std::uint8_t tag = 0;
        SpliceTime time;            ///< of splice_insert
        std::uint32_t utcTime = 0;  ///< of splice_schedule, seconds since 6 January 1980
    };

    std::uint32_t id = 0;
    bool cancelled = false;  ///< nothing below is there then
    bool outOfNetwork = false;
    bool programSplice = false;
    bool immediate = false;
    SpliceTime time;
    std::uint32_t utcTime = 0;
    std::vector<Component> components;
    std::optional<BreakDuration> breakDuration;
    std::uint16_t uniqueProgramId = 0;
    std::uint8_t availNumber = 0;
    std::uint8_t availsExpected = 0;
};

struct SpliceNull {};    ///< 9.7.1
struct SpliceSchedule {  ///< 9.7.2
    std::vector<SpliceEvent> events;
};
struct SpliceInsert {  ///< 9.7.3
    SpliceEvent event;
};
struct TimeSignal {  ///< 9.7.4
    SpliceTime time;
};
struct BandwidthReservation {};  ///< 9.7.5
struct PrivateCommand {          ///< 9.7.6
    std::uint32_t identifier = 0;
    std::vector<std::uint8_t> bytes;
};
using SpliceCommand =
    std::variant<SpliceNull, SpliceSchedule, SpliceInsert, TimeSignal, BandwidthReservation, PrivateCommand>;

struct AvailDescriptor {  ///< 10.3.1
    std::uint32_t providerAvailId = 0;
};
struct DtmfDescriptor {        ///< 10.3.2
    std::uint8_t preroll = 0;  ///< tenths of a second
    std::vector<std::uint8_t> characters;
};
struct SegmentationDescriptor {  ///< 10.3.3
    struct Component {
        std::uint8_t tag = 0;
        std::uint64_t ptsOffset = 0;
    };
    struct Restrictions {
        bool webDeliveryAllowed = false;
        bool noRegionalBlackout = false;
        bool archiveAllowed = false;
        std::uint8_t deviceRestrictions = 0;
    };

    std::uint32_t eventId = 0;
    bool cancelled = false;  ///< nothing below is there then
    bool programSegmentation = false;
    std::optional<Restrictions> restrictions;
    std::vector<Component> components;
    std::optional<std::uint64_t> duration;
    std::uint8_t upidType = 0;
    std::vector<std::uint8_t> upid;
    std::uint8_t typeId = 0;
    std::uint8_t number = 0;
    std::uint8_t expected = 0;
    std::uint8_t subNumber = 0;
    std::uint8_t subExpected = 0;
};
struct TimeDescriptor {  ///< 10.3.4
    std::uint64_t taiSeconds = 0;
    std::uint32_t taiNanoseconds = 0;
    std::uint16_t utcOffset = 0;
};
/// One of another identifier or tag, unparsed.
struct OtherDescriptor {
    std::uint8_t tag = 0;
    std::uint32_t identifier = 0;
    std::vector<std::uint8_t> bytes;
};
using SpliceDescriptor =
    std::variant<AvailDescriptor, DtmfDescriptor, SegmentationDescriptor, TimeDescriptor, OtherDescriptor>;

/// splice_info_section (9.6.1).
struct SpliceInfoSection {
    std::uint8_t sapType = 0;
    std::uint8_t protocolVersion = 0;
    bool encrypted = false;  ///< command and descriptors are left unparsed then
    std::uint8_t encryptionAlgorithm = 0;
    std::uint64_t ptsAdjustment = 0;
    std::uint8_t cwIndex = 0;
    std::uint16_t tier = 0;
    std::uint8_t commandType = 0;
    SpliceCommand command;
    std::vector<SpliceDescriptor> descriptors;
    /// Whether CRC_32 fits. A section with a wrong one is parsed all the same.
    bool crcValid = false;
};

/// Throws SpliceInfoException: "Bad splice descriptor size", "Unmanaged command type", or another text for a
/// section that is none or ends too early. What follows the section is not looked at.
SpliceInfoSection parseSpliceInfoSection(std::span<const std::uint8_t> bytes);

}  // namespace mvrtpfec
