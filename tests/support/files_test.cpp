#include <algorithm>
#include <cctype>
#include <utility>

#include "support/files/drive.h"
#include "tests/support/file_tree.h"

namespace mvn {
namespace {

using Components = std::vector<std::string>;
using FilesTest = FileTreeTest;

TEST_F(FilesTest, PathsAreNormalised) {
    EXPECT_EQ(File("C:\\logs\\.\\\\today\\").Components(), (Components{"C:", "logs", "today"}));
    EXPECT_EQ(File("C:\\a\\..\\b").Path(), "C:\\a\\..\\b");
    EXPECT_EQ(File("\\\\server\\share").Components(), (Components{"\\\\server", "share"}));
    EXPECT_EQ(File(".\\a\\.").Path(), ".\\a");
    EXPECT_EQ(failure([] { File(""); }), "invalid path []");
    EXPECT_EQ(failure([] { File("\\\\\\"); }), "invalid path [\\\\\\]");
    EXPECT_THROW(File(""), FileException);
}

TEST_F(FilesTest, DirectoriesAreMadeWithThoseAboveAndInPlaceOfFiles) {
    const File deep = root().Child("a").Child("b").Child("c");
    deep.EnsureDirectory();
    deep.EnsureDirectory();
    EXPECT_TRUE(std::filesystem::is_directory(native("a/b/c")));
    write("a/file", "text");
    root().Child("a").Child("file").Child("below").EnsureDirectory();
    EXPECT_EQ(namesIn(root().Child("a")), (std::set<std::string>{"b/", "file/"}));
    EXPECT_EQ(namesIn(deep), std::set<std::string>{});
    EXPECT_EQ(failure([&] { root().Child("a\\file\\none").Enumerate([](const File&, bool) {}); }),
              root().Path() + "\\a\\file\\none is not a directory");
}

TEST_F(FilesTest, TreesAreCopiedAndRemoved) {
    root().Child("from").Child("sub").EnsureDirectory();
    write("from/one", "1");
    write("from/sub/two", std::string(100'000, '2'));
    root().Child("to").EnsureDirectory();
    write("to/one", "old and longer");
    write("to/other", "stays");
    root().Child("from").Copy(root().Child("to"));
    EXPECT_EQ(read("to/one"), "1");
    EXPECT_EQ(read("to/sub/two"), std::string(100'000, '2'));
    EXPECT_EQ(namesIn(root().Child("to")), (std::set<std::string>{"one", "other", "sub/"}));
    EXPECT_EQ(failure([&] { root().Child("none").Copy(root().Child("to")); }),
              "cannot copy " + root().Path() + "\\none to " + root().Path() + "\\to");

    root().Child("to").Remove();
    root().Child("from").Child("one").Remove();
    root().Child("none").Remove();
    EXPECT_EQ(namesIn(root()), std::set<std::string>{"from/"});
    EXPECT_EQ(namesIn(root().Child("from")), std::set<std::string>{"sub/"});
}

TEST_F(FilesTest, NothingIsCopiedOntoOrIntoItselfHoweverItIsWritten) {
    root().Child("tree").Child("sub").EnsureDirectory();
    write("tree/sub/one", "1");
    write("tree/other", "2");
    const std::string path = root().Path();
    for (const auto& [from, to] :
         {std::pair<std::string, std::string>{"\\tree\\sub\\one", "\\tree\\sub\\one"},
          {"\\tree\\sub\\one", "\\tree\\..\\tree\\sub\\one"},
          {"\\tree\\sub\\one", "\\tree"},
          {"\\tree\\sub", "\\tree\\sub\\in"},
          {"\\tree", "\\tree"},
          {"\\tree", "\\tree\\none\\..\\in"}}) {
        std::string slashes = path + to;
        std::ranges::replace(slashes, '\\', '/');
        std::string capitals = path + to;
        std::ranges::transform(capitals, capitals.begin(), [](unsigned char c) { return std::toupper(c); });
        for (const std::string& spelling : {path + to, slashes, capitals}) {
            // Where case matters, the capitals stand for another file.
            if (spelling == capitals && !std::filesystem::exists(native("TREE"))) continue;
            EXPECT_EQ(failure([&, &from = from] { File(path + from).Copy(File(spelling)); }),
                      "cannot copy " + path + from + " to " + File(spelling).Path());
            EXPECT_EQ(read("tree/sub/one") + read("tree/other"), "12") << from << " to " << spelling;
            EXPECT_EQ(namesIn(root().Child("tree")), (std::set<std::string>{"other", "sub/"}));
        }
    }
}

TEST_F(FilesTest, FailuresTellTheSystemsNumber) {
    const std::string none = root().Path() + "\\none";
    EXPECT_EQ(failure([&] { File(none).RemoveFile(); }),
              "could not remove file [" + none + "]: Win32 error 2");
    EXPECT_EQ(failure([&] { File(none + "\\x").RemoveFile(); }),
              "could not remove file [" + none + "\\x]: Win32 error 3");
    EXPECT_EQ(failure([&] { root().RemoveFile(); }),
              "could not remove file [" + root().Path() + "]: Win32 error 5");
    write("file", "");
    EXPECT_EQ(failure([&] { File(root().Path() + "\\file").RemoveDirectory(); }),
              root().Path() + "\\file is not a directory");
}

TEST_F(FilesTest, ADriveHoldsItsFiles) {
    const Drive drive(root().Path());
    EXPECT_TRUE(drive.IsReady());
    EXPECT_FALSE(drive.Root().empty());
    EXPECT_GT(drive.TotalSpace(), 1'000'000U);
    const auto all = Drive::List();
    EXPECT_NE(std::ranges::find(all, drive.Root()), all.end()) << drive.Root();
    EXPECT_EQ(failure([] { Drive(""); }), "Could not get drive number from file name .");
}

}  // namespace
}  // namespace mvn
