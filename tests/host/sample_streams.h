#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/media/sample_source.h"
#include "host/media/stream_format.h"
#include "rtp_media/chain/nal_builder.h"

namespace mvrtpfec {

using Bytes = std::vector<std::uint8_t>;

inline std::filesystem::path streamPath(const std::string& name) {
    // With the drive where there is one: a program there takes a leading slash for an option.
    return std::filesystem::absolute(std::filesystem::path(MVRTPFEC_SOURCE) / "samples" / "streams" / name);
}

inline Bytes streamBytes(const std::string& name) {
    std::ifstream file(streamPath(name), std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// By its name; null for a file that is no stream.
inline const StreamFormat* formatOfStream(const std::string& name) {
    static const std::map<std::string, std::string> formats{
        {".264", "h264"},        {".265", "hevc"},      {".263", "h263"},
        {".m4v", "mpeg4"},       {".m2v", "mpeg2"},     {".prores", "prores"},
        {".aac", "aac-adts"},    {".latm", "aac-latm"}, {".aacraw", "aac-raw"},
        {".mp2", "mpeg1-audio"}, {".ac3", "ac3"},       {".eac3", "ac3"},
        {".ttml", "ttml"},       {".vtt", "webvtt"},    {".dvbsub", "dvb-subtitle"},
        {".ts", "mpeg2ts"}};
    const std::filesystem::path path = name;
    const auto found = formats.find(path.extension().string());
    return findStreamFormat(found != formats.end() ? found->second : path.stem().string());
}

inline std::vector<std::string> streamNames() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(streamPath("")))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class KeptUnits : public NALListener {
public:
    void onNAL(std::unique_ptr<NAL> unit) override { units.push_back(std::move(unit)); }
    void onEndOfStream() override {}

    std::vector<Bytes> contents() const {
        std::vector<Bytes> all;
        for (const auto& unit : units) all.emplace_back(unit->bytes().begin(), unit->bytes().end());
        return all;
    }

    std::vector<std::unique_ptr<NAL>> units;
};

/// The units of a stream given in samples of `nextSize()` bytes.
inline KeptUnits unitsOf(StreamType type, const Bytes& stream, const std::function<std::size_t()>& nextSize) {
    KeptUnits kept;
    const auto parser = createNALBuilder(type);
    parser->setListener(&kept);
    for (std::size_t at = 0; at < stream.size();) {
        const std::size_t count = std::min(nextSize(), stream.size() - at);
        const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(at);
        parser->input(sampleOf(Bytes(begin, begin + static_cast<std::ptrdiff_t>(count))));
        at += count;
    }
    parser->flush();
    return kept;
}

/// As the program cuts the file.
inline KeptUnits unitsOfFile(const std::filesystem::path& path, StreamType type) {
    KeptUnits kept;
    const auto samples = openSamples(path, type);
    const auto parser = createNALBuilder(type);
    parser->setListener(&kept);
    while (const SamplePtr sample = samples->read()) parser->input(sample);
    parser->flush();
    return kept;
}

}  // namespace mvrtpfec
