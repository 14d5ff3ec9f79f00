#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <span>
#include <vector>

#include "framework/base/com_ptr.h"
#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/simple_media_data.h"

namespace mvrtpfec::test {

using Bytes = std::vector<std::uint8_t>;

/// A sample over a copy of the bytes.
inline CComPtr<SimpleMediaData> sampleOf(std::span<const std::uint8_t> bytes) {
    return SimpleMediaData::create(Bytes(bytes.begin(), bytes.end()));
}

/// Keeps what a parser gives out.
class CollectedUnits : public NALListener {
public:
    void onNAL(std::unique_ptr<NAL> unit) override { units.push_back(std::move(unit)); }
    void onEndOfStream() override { ++endsOfStream; }

    std::vector<Bytes> contents() const {
        std::vector<Bytes> all;
        for (const auto& unit : units) all.emplace_back(unit->bytes().begin(), unit->bytes().end());
        return all;
    }

    std::vector<std::unique_ptr<NAL>> units;
    int endsOfStream = 0;
};

/// Feeds the stream in samples of `nextSize()` bytes each, then flushes.
template <class NextSize>
std::vector<Bytes> unitsOf(NALBuilder& parser, std::span<const std::uint8_t> stream, NextSize nextSize) {
    CollectedUnits collected;
    parser.setListener(&collected);
    while (!stream.empty()) {
        const std::size_t size = std::min<std::size_t>(nextSize(), stream.size());
        parser.input(sampleOf(stream.first(size)).p);
        stream = stream.subspan(size);
    }
    parser.flush();
    parser.setListener(nullptr);
    return collected.contents();
}

}  // namespace mvrtpfec::test
