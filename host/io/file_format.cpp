#include "host/io/file_format.h"

#include <string>

#include "host/usage_error.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

std::string lowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

}  // namespace

FileFormat formatOf(const std::filesystem::path& path) {
    const std::string extension = lowerCase(platform::utf8From(path.extension()));
    if (extension == ".ts") return FileFormat::transportStream;
    if (extension == ".pcap") return FileFormat::pcap;
    if (extension == ".pcapng") return FileFormat::pcapng;
    throw UsageError(platform::utf8From(path) + ": the name must end in .ts, .pcap or .pcapng");
}

}  // namespace mvrtpfec
