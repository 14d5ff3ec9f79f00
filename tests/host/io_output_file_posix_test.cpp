#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/io/output_file.h"
#include "platform/process/signals.h"
#include "tests/host/io_test_files.h"

namespace mvrtpfec {
namespace {

namespace fs = std::filesystem;

class OutputFilePosix : public FileTest {};

const Bytes oldBytes = {1, 2, 3};
const Bytes newBytes(200'000, 7);

TEST_F(OutputFilePosix, FollowsALinkAndKeepsTheMode) {
    const fs::path path = store("out.ts", oldBytes);
    fs::permissions(path, fs::perms(0640));
    fs::create_symlink("out.ts", pathOf("link.ts"));
    OutputFile(pathOf("link.ts")).write(newBytes);
    EXPECT_EQ(load("out.ts"), oldBytes);
    EXPECT_EQ(fileCount(), 2u);

    OutputFile file(pathOf("link.ts"));
    file.write(newBytes);
    file.finish();
    EXPECT_EQ(load("out.ts"), newBytes);
    EXPECT_TRUE(fs::is_symlink(pathOf("link.ts")));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
}

TEST_F(OutputFilePosix, NamesTheFileAndTheReason) {
    const auto errorOfWriting = [](const fs::path& path, std::size_t count) {
        return errorOf([&] {
            OutputFile file(path);
            file.write(Bytes(count));
            if (count == 1) file.finish();
        });
    };
    EXPECT_EQ(errorOfWriting(pathOf("none/out.ts"), 0), "out.ts: cannot create: No such file or directory");
    EXPECT_EQ(errorOfWriting(pathOf(""), 0), ": cannot open for writing: Is a directory");
    EXPECT_EQ(errorOfWriting("/dev/fd/987", 0), "987: cannot open for writing: Bad file descriptor");
    // Found out at the end, or on the way when that is far.
    for (const std::size_t count : {1u, 200'000u})
        EXPECT_EQ(errorOfWriting("/dev/full", count), "full: cannot write: No space left on device");
}

TEST_F(OutputFilePosix, ReportsAClosedPipe) {
    platform::ignoreWriteSignals();
    const fs::path path = pathOf("out.ts");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    OutputFile file(path);
    close(reader);
    EXPECT_EQ(errorOf([&] { file.write(newBytes); }), "out.ts: cannot write: Broken pipe");
    EXPECT_TRUE(fs::is_fifo(path));
}

/// As the shell opens it for >>: what stands there already has to stay.
TEST_F(OutputFilePosix, WritesToAGivenDescriptorWhereItStands) {
    const fs::path path = store("log.ts", oldBytes);
    const int descriptor = open(path.c_str(), O_WRONLY | O_APPEND);
    OutputFile file("/dev/fd/" + std::to_string(descriptor));
    file.write(oldBytes);
    file.finish();
    close(descriptor);
    EXPECT_EQ(load("log.ts"), (Bytes{1, 2, 3, 1, 2, 3}));
}

}  // namespace
}  // namespace mvrtpfec
