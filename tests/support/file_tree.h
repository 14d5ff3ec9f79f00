#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "support/files/file.h"

namespace mvn {

/// A folder of the test's own.
class FileTreeTest : public testing::Test {
protected:
    FileTreeTest() { std::filesystem::create_directory(folder_); }
    ~FileTreeTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    File root() const { return File(folder_.string()); }
    std::filesystem::path native(const std::string& name) const { return folder_ / name; }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(native(name), std::ios::binary) << text;
    }
    std::string read(const std::string& name) const {
        std::ifstream file(native(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Names, those of directories with a slash behind.
    static std::set<std::string> namesIn(const File& directory) {
        std::set<std::string> names;
        directory.Enumerate([&](const File& child, bool isDirectory) {
            names.insert(child.Components().back() + (isDirectory ? "/" : ""));
        });
        return names;
    }
    /// What an operation throws.
    template <class Operation>
    static std::string failure(const Operation& operation) {
        try {
            operation();
        } catch (const std::exception& error) {
            return error.what();
        }
        return "";
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() /
        ("mvrtpfec-files-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
};

}  // namespace mvn
