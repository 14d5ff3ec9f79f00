#include "receiver/sample_sequence_number.h"

#include <algorithm>

#include "core/big_endian.h"

namespace mvrtpfec {

std::int32_t GetRtpSequenceNumber(CComPtr<IMediaSample> sample) {
    BYTE* data = nullptr;
    // Samples of others may leave the size, or the length, at 0.
    const LONG held = std::max(sample->GetSize(), sample->GetActualDataLength());
    if (FAILED(sample->GetPointer(&data)) || data == nullptr || held < 3) return 0;
    return held == 3 ? data[2] << 8 : readBigEndian16(data + 2);
}

}  // namespace mvrtpfec
