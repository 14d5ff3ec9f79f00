#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/io/file_error.h"
#include "platform/process/process.h"

namespace mvrtpfec {

using Bytes = std::vector<std::uint8_t>;

/// A fresh directory for the files of one test, gone with it.
class FileTest : public testing::Test {
protected:
    FileTest() {
        static int count = 0;
        const std::string name =
            "mvrtpfec-test-" + std::to_string(platform::processId()) + "-" + std::to_string(count++);
        folder_ = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directory(folder_);
    }
    ~FileTest() override { std::filesystem::remove_all(folder_); }

    std::filesystem::path pathOf(const std::string& name) const { return folder_ / name; }

    std::filesystem::path store(const std::string& name, const Bytes& bytes) const {
        std::ofstream file(pathOf(name), std::ios::binary);
        for (const std::uint8_t byte : bytes) file.put(static_cast<char>(byte));
        return pathOf(name);
    }

    Bytes load(const std::string& name) const {
        std::ifstream file(pathOf(name), std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(file), {});
    }

    std::string text(const std::string& name) const {
        const Bytes bytes = load(name);
        return {bytes.begin(), bytes.end()};
    }

    std::size_t fileCount() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
    }

private:
    std::filesystem::path folder_;
};

/// The message of the FileError that `action` throws, without the folder of the file it names.
template <class Action>
std::string errorOf(Action action) {
    try {
        action();
    } catch (const FileError& error) {
        const std::string message = error.what();
        const std::size_t nameEnd = message.find(": ");
        return message.substr(message.find_last_of("/\\", nameEnd) + 1);
    }
    return "no error";
}

}  // namespace mvrtpfec
