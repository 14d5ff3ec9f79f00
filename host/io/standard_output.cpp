#include "host/io/standard_output.h"

#include <cerrno>
#include <cstdio>

#include "host/io/file_error.h"
#include "platform/files/files.h"

namespace mvrtpfec {

namespace {

bool readerGone = false;

void fail(int error) {
    if (!platform::meansClosedPipe(error)) throw FileError("standard output", "cannot write", error);
    readerGone = true;
}

}  // namespace

void print(std::string_view text) {
    if (!readerGone && std::fwrite(text.data(), 1, text.size(), stdout) < text.size()) fail(errno);
}

void flushPrinted() {
    if (!readerGone && std::fflush(stdout) != 0) fail(errno);
}

bool isReaderGone() noexcept {
    return readerGone;
}

}  // namespace mvrtpfec
