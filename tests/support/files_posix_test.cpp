#include <functional>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/files/drive.h"
#include "tests/support/file_tree.h"

namespace mvn {
namespace {

using FilesPosixTest = FileTreeTest;

TEST_F(FilesPosixTest, LinksAreRemovedAndNotFollowed) {
    root().Child("outside").EnsureDirectory();
    write("outside/precious", "stays");
    root().Child("tree").EnsureDirectory();
    std::filesystem::create_symlink(native("outside"), native("tree/directory"));
    std::filesystem::create_symlink(native("outside/precious"), native("tree/file"));
    std::filesystem::create_symlink("nowhere", native("tree/dangling"));
    std::filesystem::create_symlink("..", native("tree/up"));
    std::filesystem::create_symlink(native("outside"), native("alone"));
    EXPECT_EQ(namesIn(root().Child("tree")),
              (std::set<std::string>{"dangling", "directory/", "file", "up/"}));
    root().Child("tree").Remove();
    root().Child("alone").Remove();
    EXPECT_EQ(namesIn(root()), std::set<std::string>{"outside/"});
    EXPECT_EQ(read("outside/precious"), "stays");
}

TEST_F(FilesPosixTest, NothingIsCopiedOntoItselfThroughALink) {
    root().Child("tree").EnsureDirectory();
    write("tree/one", "1");
    std::filesystem::create_symlink("one", native("tree/link"));
    std::filesystem::create_symlink(native("tree"), native("other"));
    const File tree = root().Child("tree");
    const File other = root().Child("other");
    for (const auto& [from, to] : {std::pair(tree.Child("link"), tree.Child("one")), std::pair(tree, other),
                                   std::pair(tree, other.Child("in")), std::pair(tree.Child("link"), tree),
                                   std::pair(tree.Child("one"), other.Child("one"))}) {
        EXPECT_NE(failure([&, &from = from, &to = to] { from.Copy(to); }), "");
        EXPECT_EQ(namesIn(tree), (std::set<std::string>{"link", "one"})) << to.Path();
        EXPECT_EQ(read("tree/link"), "1") << to.Path();
    }
}

TEST_F(FilesPosixTest, EveryNameCanBeListedCopiedAndRemoved) {
    const std::vector<std::string> names{"\xff\xfe",         "caf\xc3\xa9", "back\\slash", "\xef\x9f\xbf",
                                         "\xf0\x9f\x8e\xac", "\xc3",        "\xed\xa0\x80"};
    root().Child("from").EnsureDirectory();
    for (const auto& name : names) write("from/" + name, name);
    root().Child("from").Copy(root().Child("to"));
    for (const auto& name : names) EXPECT_EQ(read("to/" + name), name);
    EXPECT_EQ(namesIn(root().Child("to")).size(), names.size());
    root().Child("to").Remove();
    root().Child("from").Remove();
    EXPECT_EQ(namesIn(root()), std::set<std::string>{});
}

TEST_F(FilesPosixTest, DeepTreesGoOrTheirTooLongPathIsNamed) {
    File deep = root();
    for (int i = 0; i < 900; ++i) deep = deep.Child("d");
    deep.EnsureDirectory();
    root().Child("d").Remove();
    EXPECT_EQ(namesIn(root()), std::set<std::string>{});

    const std::string longName(255, 'n');
    std::string path = root().Path();
    for (int i = 0; i < 20; ++i) path += "\\" + longName;
    EXPECT_NE(failure([&] { File(path).EnsureDirectory(); }).find("]: Win32 error 206"), std::string::npos);
    root().Child(longName).Remove();
    EXPECT_EQ(namesIn(root()), std::set<std::string>{});
}

/// What it returns in a process of its own; -1 when it throws.
template <class Action>
int inChild(const Action& action) {
    const pid_t child = fork();
    if (child == 0) [&]() noexcept { _exit(action()); }();
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int asOther(const std::function<bool()>& action) {
    return inChild([&] {
        if (getuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) return 2;
        return action() ? 0 : 1;
    });
}

TEST_F(FilesPosixTest, WithoutPermissionNothingElseIsTouched) {
    root().Child("tree").Child("locked").EnsureDirectory();
    write("tree/locked/kept", "kept");
    std::filesystem::permissions(folder_, std::filesystem::perms::all);
    std::filesystem::permissions(native("tree/locked"), std::filesystem::perms{0555});
    const std::string expected =
        "could not remove file [" + root().Path() + "\\tree\\locked\\kept]: Win32 error 5";
    EXPECT_EQ(asOther([&] { return failure([&] { root().Child("tree").Remove(); }) == expected; }), 0);
    EXPECT_EQ(read("tree/locked/kept"), "kept");
    std::filesystem::permissions(native("tree/locked"), std::filesystem::perms{0});
    const std::string unlisted =
        "could not enumerate the contents of [" + root().Path() + "\\tree\\locked]: Win32 error 5";
    EXPECT_EQ(asOther([&] { return failure([&] { root().Child("tree").Remove(); }) == unlisted; }), 0);
    std::filesystem::permissions(native("tree/locked"), std::filesystem::perms::all);
}

TEST_F(FilesPosixTest, DrivesMayBeMany) {
    constexpr int many = 20;
    const int result = inChild([&] {
        const auto mounts = [](const auto& point) {
            return mount("none", point.c_str(), "tmpfs", 0, "") == 0;
        };
        bool mayMount = (unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) &&
                        mount("", "/", "", MS_REC | MS_PRIVATE, "") == 0 && mounts(folder_);
        std::error_code error;
        for (int i = 0; i < many && mayMount; ++i) {
            const auto point = native(std::string(100, 'n') + std::to_string(i));
            mayMount = std::filesystem::create_directory(point, error) && mounts(point);
        }
        return !mayMount ? 2 : Drive::List().size() > many ? 0 : 1;
    });
    if (result == 2) GTEST_SKIP() << "no file system may be mounted here";
    EXPECT_EQ(result, 0);
}

TEST_F(FilesPosixTest, ADirectoryThatChangesWhileItIsListed) {
    for (int i = 0; i < 300; ++i) write("file" + std::to_string(i), "");
    int seen = 0;
    root().Enumerate([&](const File& child, bool) {
        ++seen;
        child.Remove();
        write("new" + std::to_string(seen), "");
        if (seen > 5000) throw std::runtime_error("never ends");
    });
    EXPECT_GE(seen, 300);
}

}  // namespace
}  // namespace mvn
