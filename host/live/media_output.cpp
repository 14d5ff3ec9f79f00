#include "host/live/media_output.h"

#include <chrono>
#include <utility>

#include <asio/io_context.hpp>

#include "host/io/file_error.h"
#include "host/io/file_format.h"
#include "host/io/media_payload.h"
#include "host/io/output_file.h"
#include "host/net/endpoint.h"
#include "host/net/packet_writer.h"
#include "host/usage_error.h"
#include "platform/files/utf8_path.h"
#include "platform/process/signals.h"

namespace mvrtpfec {

namespace {

using namespace std::chrono_literals;

class NoOutput final : public MediaOutput {
public:
    void write(ConstRtpPacketView) override {}
    void finish() override {}
};

class FileMediaOutput final : public MediaOutput {
public:
    explicit FileMediaOutput(const std::filesystem::path& path) : file_(path) {}
    /// A recording that breaks off is worth keeping.
    ~FileMediaOutput() override {
        if (hasMedia_) file_.keep();
    }
    FileMediaOutput(const FileMediaOutput&) = delete;
    FileMediaOutput& operator=(const FileMediaOutput&) = delete;

    void write(ConstRtpPacketView media) override {
        hasMedia_ = true;
        file_.write(mediaPayload({media.data, media.length}));
    }
    void finish() override {
        hasMedia_ = false;
        file_.finish();
    }

private:
    OutputFile file_;
    bool hasMedia_ = false;
};

/// Its reader gets each packet at once.
class PipeMediaOutput final : public MediaOutput {
public:
    explicit PipeMediaOutput(const std::filesystem::path& path) : path_(path), file_(path) {}

    void write(ConstRtpPacketView media) override {
        file_.write(mediaPayload({media.data, media.length}));
        waitForReader();
        file_.flush();
    }
    void finish() override { file_.finish(); }

private:
    /// A reader may be slow, but when the program is to end it has two seconds.
    void waitForReader() {
        constexpr auto turn = 100ms;
        for (int left = 20; !file_.isWritableWithin(turn);) {
            if (platform::wasInterrupted() && left-- == 0) throw FileError(path_, "nobody reads it");
        }
    }

    std::filesystem::path path_;
    OutputFile file_;
};

class UdpMediaOutput final : public MediaOutput {
public:
    UdpMediaOutput(const asio::ip::udp::endpoint& target, const SendingOptions& options, bool isBare)
        : writer_(openSender(context_, target, options)), isBare_(isBare) {}

    void write(ConstRtpPacketView media) override {
        const std::span<const std::uint8_t> packet(media.data, media.length);
        writer_.write(isBare_ ? mediaPayload(packet) : packet);
        writer_.flush();
    }
    void finish() override { writer_.flush(); }
    std::uint64_t refused() const override { return writer_.refused(); }

private:
    asio::io_context context_;
    PacketWriter writer_;
    bool isBare_;
};

bool isTransportStream(const std::filesystem::path& path) {
    try {
        return formatOf(path) == FileFormat::transportStream;
    } catch (const UsageError&) {
        return false;
    }
}

}  // namespace

std::unique_ptr<MediaOutput> openMediaOutput(const std::string& text, const SendingOptions& options) {
    if (text == "null") return std::make_unique<NoOutput>();
    if (text == "-") return std::make_unique<PipeMediaOutput>("/dev/stdout");
    if (const auto target = parseNetworkName(text))
        return std::make_unique<UdpMediaOutput>(*target, options, text.starts_with("udp"));
    const auto path = platform::pathFromUtf8(text);
    if (!isTransportStream(path))
        throw UsageError(text + ": is no .ts file, udp:// or rtp:// address, - or null");
    return std::make_unique<FileMediaOutput>(path);
}

}  // namespace mvrtpfec
