#include <algorithm>
#include <string_view>

#include "platform/component/error_text.h"

namespace platform {
namespace {

struct Entry {
    HRESULT code;
    std::string_view text;
};

constexpr Entry catalogue[] = {
    {E_NOTIMPL, "Not implemented"},
    {E_NOINTERFACE, "Interface not supported"},
    {E_POINTER, "Invalid pointer"},
    {E_ABORT, "Operation aborted"},
    {E_FAIL, "Unspecified error"},
    {E_UNEXPECTED, "Unexpected failure"},
    {E_ACCESSDENIED, "Access denied"},
    {E_OUTOFMEMORY, "Out of memory"},
    {E_INVALIDARG, "Invalid argument"},
    {CLASS_E_NOAGGREGATION, "The class can't be part of an aggregate"},
    {CLASS_E_CLASSNOTAVAILABLE, "The module has no such class"},
    {REGDB_E_CLASSNOTREG, "Class not registered"},
    {VFW_E_INVALIDMEDIATYPE, "Invalid media type"},
    {VFW_E_ENUM_OUT_OF_SYNC, "The enumerator's list has changed"},
    {VFW_E_ALREADY_CONNECTED, "Already connected"},
    {VFW_E_NO_ACCEPTABLE_TYPES, "No media type that both pins accept"},
    {VFW_E_INVALID_DIRECTION, "Two pins of the same direction"},
    {VFW_E_NOT_CONNECTED, "Not connected"},
    {VFW_E_NO_ALLOCATOR, "No allocator"},
    {VFW_E_RUNTIME_ERROR, "Run-time error"},
    {VFW_E_BUFFER_NOTSET, "No buffer has been set"},
    {VFW_E_BUFFER_OVERFLOW, "The buffer is too small"},
    {VFW_E_BADALIGN, "Invalid alignment"},
    {VFW_E_ALREADY_COMMITTED, "The allocator is committed already"},
    {VFW_E_BUFFERS_OUTSTANDING, "Buffers are still in use"},
    {VFW_E_NOT_COMMITTED, "The allocator isn't committed"},
    {VFW_E_SIZENOTSET, "No buffer size has been set"},
    {VFW_E_NO_CLOCK, "No clock"},
    {VFW_E_NOT_FOUND, "Not found"},
    {VFW_E_CANNOT_CONNECT, "The pins can't be connected"},
    {VFW_E_NOT_STOPPED, "Only possible while stopped"},
    {VFW_E_WRONG_STATE, "Not possible in this state"},
    {VFW_E_TYPE_NOT_ACCEPTED, "Media type not accepted"},
    {VFW_E_DUPLICATE_NAME, "The name is taken"},
    {VFW_E_TIMEOUT, "Timed out"},
    {VFW_E_SAMPLE_TIME_NOT_SET, "The sample has no time"},
    {VFW_E_MEDIA_TIME_NOT_SET, "The sample has no media time"},
    {VFW_E_NOT_IN_GRAPH, "Not in the graph"},
};

}  // namespace

std::size_t frameworkErrorText(HRESULT code, ErrorTextBuffer& buffer) noexcept {
    for (const Entry& entry : catalogue)
        if (entry.code == code) return entry.text.copy(buffer.data(), buffer.size());
    return 0;
}

}  // namespace platform
