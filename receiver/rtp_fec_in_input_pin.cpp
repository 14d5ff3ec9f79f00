#include "receiver/rtp_fec_in_input_pin.h"

#include <utility>

#include "receiver/rtp_fec_in.h"

namespace mvrtpfec {

void CRtpFecInInputPin::Receive(CComPtr<IMediaSample> sample) {
    owner_->Receive(index_, std::move(sample));
}

void CRtpFecInInputPin::EndOfStream() {
    owner_->Receive(index_, nullptr);
}

}  // namespace mvrtpfec
