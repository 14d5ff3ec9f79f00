#include "host/commands/interruption.h"

#include <stdexcept>

#include "platform/process/signals.h"

namespace mvrtpfec {

void throwIfInterrupted() {
    if (platform::wasInterrupted()) throw std::runtime_error("interrupted");
}

}  // namespace mvrtpfec
