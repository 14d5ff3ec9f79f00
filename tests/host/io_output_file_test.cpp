#include <gtest/gtest.h>

#include "host/io/output_file.h"
#include "platform/files/files.h"
#include "tests/host/io_test_files.h"

namespace mvrtpfec {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public FileTest {};

const Bytes oldBytes = {1, 2, 3};
const Bytes newBytes(200'000, 7);

/// Until then it stands beside its place, where a person finds it if this process dies.
TEST_F(OutputFileTest, AppearsOnlyWhenFinishedAndTouchesNothingUnfinished) {
    const fs::path older = store("out.ts.part", oldBytes);
    OutputFile file(pathOf("out.ts"));
    file.write(newBytes);
    EXPECT_FALSE(fs::exists(pathOf("out.ts")));
    EXPECT_EQ(unfinishedOf(pathOf("out.ts")), (std::vector{older, pathOf("out.ts.part2")}));
    file.finish();
    EXPECT_EQ(load("out.ts"), newBytes);
    EXPECT_EQ(load("out.ts.part"), oldBytes);
    EXPECT_EQ(fileCount(), 2u);
    OutputFile(pathOf(std::string(250, 'x') + ".ts")).finish();
    EXPECT_EQ(fileCount(), 3u);
}

TEST_F(OutputFileTest, LeavesTheOldFileUntilFinished) {
    store("out.ts", oldBytes);
    OutputFile(pathOf("out.ts")).write(newBytes);
    EXPECT_EQ(load("out.ts"), oldBytes);
    EXPECT_EQ(fileCount(), 1u);

    OutputFile file(pathOf("out.ts"));
    file.write(newBytes);
    file.finish();
    EXPECT_EQ(load("out.ts"), newBytes);
}

TEST_F(OutputFileTest, RefusesWhatItMayNotReplaceAndNamesTheReason) {
    const auto errorOfOpening = [&](const char* name) {
        return errorOf([&] { OutputFile file(pathOf(name)); });
    };
    EXPECT_EQ(errorOfOpening("none/out.ts"), "out.ts: cannot create: No such file or directory");
    fs::create_directory(pathOf("folder.ts"));
    EXPECT_TRUE(errorOfOpening("folder.ts").starts_with("folder.ts: cannot open for writing: "));
    const fs::path kept = store("kept.ts", oldBytes);
    fs::permissions(kept, fs::perms(0444));
    if (platform::mayWrite(kept)) GTEST_SKIP() << "this user may write to every file";
    EXPECT_EQ(errorOfOpening("kept.ts"), "kept.ts: cannot open for writing: Permission denied");
    fs::permissions(kept, fs::perms(0644));
}

}  // namespace
}  // namespace mvrtpfec
