#include "receiver/sample_sequence_number.h"

#include "core/big_endian.h"

namespace mvrtpfec {

std::int32_t GetRtpSequenceNumber(CComPtr<IMediaSample> sample) {
    BYTE* data = nullptr;
    const LONG held = sample->GetSize();
    if (FAILED(sample->GetPointer(&data)) || data == nullptr || held < 3) return 0;
    return held == 3 ? data[2] << 8 : readBigEndian16(data + 2);
}

}  // namespace mvrtpfec
