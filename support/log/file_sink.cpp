#include "support/log/file_sink.h"

#include <cerrno>
#include <chrono>
#include <span>
#include <system_error>
#include <utility>

#include "platform/files/files.h"
#include "platform/files/utf8_path.h"

namespace mvn::log {

namespace {

constexpr std::chrono::seconds betweenTries{1};

std::string reason(int error) {
    return std::generic_category().message(error);
}

}  // namespace

FileSink::FileSink(const std::filesystem::path& path, std::int32_t maximumLevel, Opening opening,
                   Complaint complain)
    : LogSink(maximumLevel),
      name_(platform::utf8From(path)),
      descriptor_(platform::openForAppending(path, opening == Opening::replaced)),
      complaint_(std::move(complain)) {
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), name_);
}

FileSink::~FileSink() {
    if (!platform::closeDescriptor(descriptor_)) complain(errno);
}

std::string FileSink::lineOf(const LogRecord& record) const {
    return "[Level " + std::to_string(record.level) + "] " + timePrefix(record.time) + record.text + "\n";
}

std::string CsvFileSink::lineOf(const LogRecord& record) const {
    return record.text.substr(0, record.text.size() - (record.text.ends_with(',') ? 1 : 0)) + "\n";
}

void FileSink::write(const LogRecord& record) {
    const std::string line = lineOf(record);
    std::span rest(reinterpret_cast<const std::uint8_t*>(line.data()), line.size());
    for (;;) {
        const std::ptrdiff_t written = platform::writeSome(descriptor_, rest);
        if (written > 0) rest = rest.subspan(static_cast<std::size_t>(written));
        if (rest.empty()) return;
        if (written > 0) continue;
        complain(written < 0 ? errno : ENOSPC);
        if (!waitForAnotherTry()) return;
    }
}

/// False when there will be none.
bool FileSink::waitForAnotherTry() {
    std::unique_lock lock(mutex_);
    if (gaveUp_) return false;
    ending_.wait_for(lock, betweenTries, [this] { return gaveUp_; });
    return true;
}

void FileSink::giveUpWaiting() noexcept {
    const std::lock_guard lock(mutex_);
    gaveUp_ = true;
    ending_.notify_all();
}

void FileSink::complain(int error) {
    if (std::exchange(hasComplained_, true)) return;
    complaint_(name_ + " can't be written, tried again until it can: " + reason(error));
}

}  // namespace mvn::log
