#include "host/graph/packet_input_pin.h"

#include <algorithm>
#include <new>

#include "framework/base/mem_allocator.h"
#include "host/graph/pin_names.h"
#include "host/io/datagram.h"

namespace mvrtpfec {

namespace {

/// A receiver asks for buffers of the longest packet it makes, but passes longer ones on.
class RoomyAllocator final : public CMemAllocator {
public:
    RoomyAllocator() : CMemAllocator("RoomyAllocator", nullptr) {}

    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override {
        if (request == nullptr) return E_POINTER;
        ALLOCATOR_PROPERTIES roomy = *request;
        roomy.cbBuffer = std::max(roomy.cbBuffer, LONG{maxDatagramSize});
        return CMemAllocator::SetProperties(&roomy, actual);
    }
};

}  // namespace

PacketInputPin::PacketInputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, std::size_t index,
                               PacketTaker& taker)
    : CBaseInputPin("PacketInputPin", filter, lock, result, inputPinName(index)),
      index_(index),
      taker_(taker) {}

HRESULT PacketInputPin::GetAllocator(IMemAllocator** allocator) {
    if (allocator == nullptr) return E_POINTER;
    *allocator = new (std::nothrow) RoomyAllocator;  // NOLINT(cppcoreguidelines-owning-memory)
    if (*allocator == nullptr) return E_OUTOFMEMORY;
    (*allocator)->AddRef();
    return S_OK;
}

HRESULT PacketInputPin::Receive(IMediaSample* sample) {
    const HRESULT result = CBaseInputPin::Receive(sample);
    if (result != S_OK) return result;
    BYTE* data = nullptr;
    const HRESULT read = sample->GetPointer(&data);
    if (FAILED(read)) return read;
    return taker_.take(index_, {data, static_cast<std::uint16_t>(sample->GetActualDataLength())});
}

HRESULT PacketInputPin::EndOfStream() {
    const HRESULT result = CBaseInputPin::EndOfStream();
    return FAILED(result) ? result : taker_.endStream(index_);
}

}  // namespace mvrtpfec
