#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/io/capture_writer.h"
#include "host/io/packet_source.h"
#include "tests/host/io_test_frames.h"

namespace mvrtpfec {
namespace {

class InputFilePosix : public FileTest {};

TEST_F(InputFilePosix, CaptureIsReadFromAPipe) {
    const auto writer = openCapture(pathOf("in.pcapng"), FileFormat::pcapng, LinkType::ethernet);
    for (std::uint16_t number = 0; number < 3; ++number)
        writer->writeFrame({}, wrap(allWrappings()[0], 5004, rtpPacket(number, 40)));
    writer->finish();
    const auto path = pathOf("pipe.pcapng");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread feeder([&] { store("pipe.pcapng", load("in.pcapng")); });
    const auto source = openSource(path, 5004);
    int count = 0;
    for (Datagram datagram; source->read(datagram);) ++count;
    feeder.join();
    EXPECT_EQ(count, 3);
}

TEST_F(InputFilePosix, FolderIsNoFile) {
    std::filesystem::create_directory(pathOf("folder.pcap"));
    EXPECT_EQ(errorOf([&] { openSource(pathOf("folder.pcap"), 5004); }),
              "folder.pcap: cannot read: Is a directory");
}

}  // namespace
}  // namespace mvrtpfec
