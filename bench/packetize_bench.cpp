#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/peer_program.h"
#include "bench/targets.h"
#include "framework/base/com_ptr.h"
#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/rtp_packet_builder.h"
#include "rtp_media/chain/simple_media_data.h"

namespace mvrtpfec::bench {

namespace {

using Bytes = std::vector<std::uint8_t>;
using Sample = CComPtr<SimpleMediaData>;

constexpr std::size_t streamSize = 100'000'000;
constexpr std::size_t sampleSize = std::size_t{256} << 10;
constexpr const char* source = MVRTPFEC_SAMPLES "/streams/h264_large.264";

Bytes fileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.empty()) throw std::runtime_error(path + ": could not be read");
    return bytes;
}

/// The sample stream over and over: real units, 100 MB of them.
const Bytes& stream() {
    static const Bytes bytes = [] {
        const Bytes once = fileBytes(source);
        Bytes all;
        while (all.size() < streamSize) all.insert(all.end(), once.begin(), once.end());
        return all;
    }();
    return bytes;
}

/// The same in a file, for programs that read files.
class StreamFile {
public:
    StreamFile() : path_(std::filesystem::temp_directory_path() / "mvrtpfec_bench.h264") {
        std::ofstream file(path_, std::ios::binary);
        file.write(reinterpret_cast<const char*>(stream().data()),
                   static_cast<std::streamsize>(stream().size()));
        if (!file.flush()) throw std::runtime_error(path_.string() + ": could not be written");
    }
    ~StreamFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    StreamFile(const StreamFile&) = delete;
    StreamFile& operator=(const StreamFile&) = delete;

    std::string path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

const StreamFile& streamFile() {
    static const StreamFile file;
    return file;
}

/// Figures are nanoseconds per kilobyte of stream.
void countKilobytes(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(stream().size() / 1000));
}

/// One pass that finds nothing and one that copies: the least that any way of cutting does.
void searchAndCopy(benchmark::State& state) {
    Bytes bytes = stream();
    for (auto& byte : bytes) byte = byte == 0xA5 ? 0xA4 : byte;
    Bytes copy(sampleSize);
    for (auto _ : state) {
        for (std::size_t at = 0; at + sampleSize <= bytes.size(); at += sampleSize) {
            benchmark::DoNotOptimize(std::memchr(bytes.data() + at, 0xA5, sampleSize));
            std::memcpy(copy.data(), bytes.data() + at, sampleSize);
            benchmark::ClobberMemory();
        }
    }
    countKilobytes(state);
}

struct UnitCounter : NALListener {
    void onNAL(std::unique_ptr<NAL> unit) override { bytes += unit->size(); }
    void onEndOfStream() override {}
    std::size_t bytes = 0;
};

void cut(benchmark::State& state) {
    std::vector<Sample> samples;
    for (std::size_t at = 0; at < stream().size(); at += sampleSize) {
        const auto from = stream().begin() + static_cast<std::ptrdiff_t>(at);
        const auto size = std::min(sampleSize, stream().size() - at);
        samples.push_back(SimpleMediaData::create(Bytes(from, from + static_cast<std::ptrdiff_t>(size))));
    }
    for (auto _ : state) {
        UnitCounter counter;
        const auto parser = createNALBuilder(StreamType::h264);
        parser->setListener(&counter);
        for (const auto& sample : samples) parser->input(sample.p);
        parser->flush();
        if (counter.bytes != stream().size()) state.SkipWithError("units are missing");
    }
    countKilobytes(state);
}

/// Writes each packet's wire bytes, as one who sends does.
struct PacketWriter : RTPPacketListener {
    void onPacket(std::unique_ptr<RTPMediaPacket> packet) override {
        packet->writeTimestamp(0);
        bytes += packet->serialize(wire, 1).total;
        benchmark::ClobberMemory();
    }
    void onEndOfStream() override {}
    std::uint8_t wire[2048]{};
    std::size_t bytes = 0;
};

void readFile(const std::string& path, NALBuilder& parser) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) throw std::runtime_error(path + ": could not be opened");
    while (true) {
        Bytes bytes(sampleSize);
        bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
        if (bytes.empty()) break;
        parser.input(SimpleMediaData::create(std::move(bytes)).p);
    }
    parser.flush();
}

void packetize(benchmark::State& state) {
    const std::string path = streamFile().path();
    for (auto _ : state) {
        PacketWriter writer;
        const auto packetizer = RTPPacketBuilder::create(
            StreamType::h264, 96, 5000, &writer, ParameterSetMode::inBand, TimestampMode::presentation);
        const auto parser = createNALBuilder(StreamType::h264);
        parser->setListener(packetizer.get());
        readFile(path, *parser);
        // SEI messages that tell no times are not sent.
        if (writer.bytes < stream().size() / 10 * 9) state.SkipWithError("packets are missing");
    }
    countKilobytes(state);
}

/// A word "FILE" at the end of an argument stands for the file's path.
std::vector<std::string> onStreamFile(std::vector<std::string> command) {
    for (auto& word : command) {
        if (word.ends_with("FILE")) word.replace(word.size() - 4, 4, streamFile().path());
    }
    return command;
}

void peer(benchmark::State& state, const std::vector<std::string>& words) {
    const auto command = onStreamFile(words);
    for (auto _ : state) state.SetIterationTime(userSecondsOf(command));
    countKilobytes(state);
}

/// Nothing to compare with where the program isn't installed, which `probe` tells by failing.
void addPeer(const std::string& name, const std::vector<std::string>& probe,
             const std::vector<std::string>& command) {
    try {
        userSecondsOf(probe);
    } catch (const std::runtime_error&) {
        std::fprintf(stderr, "mvrtpfec_bench: %s is not installed; nothing is compared with it\n",
                     name.c_str());
        return;
    }
    benchmark::RegisterBenchmark(name.c_str(), peer, command)->UseManualTime()->Iterations(1);
    addTarget({"packetize/h264 to " + name, "packetize/h264", name, 0.5});
}

}  // namespace

void registerPacketizeBenchmarks() {
    benchmark::RegisterBenchmark("h264/search-and-copy", searchAndCopy);
    benchmark::RegisterBenchmark("h264/cut", cut);
    benchmark::RegisterBenchmark("packetize/h264", packetize);
    addTarget({"h264/cut", "h264/cut", "h264/search-and-copy", 2.0});
    addPeer("ffmpeg", {"ffmpeg", "-version"},
            {"ffmpeg", "-nostdin", "-f", "h264", "-i", "FILE", "-c", "copy", "-f", "rtp",
             "rtp://127.0.0.1:5004"});
    addPeer("gstreamer", {"gst-inspect-1.0", "h264parse"},
            {"gst-launch-1.0", "-q", "filesrc", "location=FILE", "!", "h264parse", "!", "rtph264pay", "!",
             "fakesink"});
}

}  // namespace mvrtpfec::bench
