#include "bench/peer_program.h"

#include <csignal>
#include <ctime>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace mvrtpfec::bench {

namespace {

/// What the child has for standard input, output and error: nothing.
class NoStreams {
public:
    NoStreams() {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    ~NoStreams() { posix_spawn_file_actions_destroy(&actions_); }
    NoStreams(const NoStreams&) = delete;
    NoStreams& operator=(const NoStreams&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

}  // namespace

PeerProgram::PeerProgram(const std::vector<std::string>& command) : name_(command[0]) {
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const NoStreams streams;
    if (posix_spawnp(&process_, arguments[0], streams.get(), nullptr, arguments.data(), environ) != 0)
        throw std::runtime_error(name_ + ": could not be started");
}

PeerProgram::~PeerProgram() {
    if (process_ == 0) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

double PeerProgram::spent() const {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(process_, &clock) != 0 || clock_gettime(clock, &time) != 0)
        throw std::runtime_error(name_ + ": has no clock");
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void PeerProgram::interrupt() const {
    interrupted_ = true;
    kill(process_, SIGINT);
}

CpuTime PeerProgram::finish() {
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    int status = 0;
    rusage usage{};
    if (wait4(std::exchange(process_, 0), &status, 0, &usage) < 0 || (status != 0 && !interrupted_))
        throw std::runtime_error(name_ + ": failed");
    return {seconds(usage.ru_utime), seconds(usage.ru_stime)};
}

double userSecondsOf(const std::vector<std::string>& command) {
    return PeerProgram(command).finish().user;
}

}  // namespace mvrtpfec::bench
