#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <set>

#include "platform/hresult.h"
#include "tests/model/packet.h"

namespace mvrtpfec::model {

/// What went on inside a decoder, for tests that must know that it did.
struct Events {
    int rebuiltOnArrival = 0;
    int rebuiltInPass = 0;
    int seedsAlone = 0;  ///< rebuilt from a group across 65535
    int carriedFec = 0;  ///< rebuilt packets of payload type 96
    int invalidCandidates = 0;
    int overlongSources = 0;
    int emptyOffsets = 0;  ///< groups of offset 0 with a missing number
    int secondLosses = 0;  ///< groups that lacked a second packet
    int windowWraps = 0;
    int tooManyMissing = 0;
    int tooManyKept = 0;
    int contradictions = 0;
    int foreign = 0;
    int truncated = 0;

    void add(const Events& other);
};

/// The decoder, one named operation after the other.
class FecDecoder {
public:
    using OnPacket = std::function<void(const Packet&)>;

    explicit FecDecoder(OnPacket onPacket);
    /// What the destructor of a decoder does. Nothing may follow.
    void destroy();

    HRESULT feed(const Bytes& bytes);

    std::uint64_t lostCount() const { return lostCount_; }
    std::uint64_t rebuiltCount() const { return rebuiltCount_; }
    std::uint64_t abandonedCount() const { return abandonedCount_; }
    std::uint64_t receivedCount() const { return receivedCount_; }
    const Events& events() const { return events_; }

private:
    struct Recovery {
        std::optional<Packet> packet;
        bool keep = false;
    };
    struct Group {
        std::uint16_t first;
        std::uint16_t offset;
        std::uint16_t count;
        std::uint16_t last;
    };

    static Group protectedRange(const Packet& fec);
    static std::set<std::uint16_t> numbersOf(const Group& group);
    std::uint16_t windowSize() const;

    bool learnMatrix(const Packet& fec);
    HRESULT feedFec(const Packet& fec);
    HRESULT feedMedia(const Packet& media);
    HRESULT moveWindow();

    void insert(const Packet& packet);
    bool insertFecPacket(const Packet& fec);
    Recovery tryRecover(const Packet& fec);
    std::optional<Packet> recoverPacket(std::uint16_t missing, const Packet& fec);
    static Packet seedFrom(const Packet& fec, std::uint16_t missing);
    bool combine(Packet& candidate, const Packet& source);
    void runRecoveryPass();
    void advance(std::uint16_t target);
    void releaseUpTo(std::uint32_t end);
    std::uint64_t purgeMissing();

    OnPacket onPacket_;
    bool columnsPending_ = true;
    bool rowsPending_ = true;
    std::int32_t columns_ = 1;
    std::int32_t rows_ = 1;
    std::map<std::uint16_t, Packet> packets_;
    std::set<std::uint16_t> missing_;
    std::uint16_t newestSeq_ = 0;
    std::uint16_t oldestSeq_ = 0;
    std::uint64_t lostCount_ = 0;
    std::uint64_t receivedCount_ = 0;
    std::list<Packet> fecPackets_;
    std::uint64_t abandonedCount_ = 0;
    std::uint64_t rebuiltCount_ = 0;
    Events events_;
};

}  // namespace mvrtpfec::model
