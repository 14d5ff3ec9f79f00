#include "support/log/dummy_log_perf.h"

#include "platform/process/debug_output.h"
#include "support/log/log_message.h"

namespace mvn::log {

void DummyLogPerf::Log(std::uint32_t, const char* format, ...) {
    MessageBuffer message;
    va_list arguments;
    va_start(arguments, format);
    formatMessage(message, format, arguments);
    va_end(arguments);
    OutputDebugStringA(message.data());
    OutputDebugStringA("\n");
}

}  // namespace mvn::log
