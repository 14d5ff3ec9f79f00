#include <array>

#include "framework/registration/factory_template.h"
#include "mvrtpfec/rtp_media_type.h"
#include "platform/wide_literal.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"

namespace mvrtpfec {

using platform::operator""_w;

namespace {

/// The system's record has no const name, but writes to none.
LPWSTR pinName(LPCWSTR name) {
    return const_cast<LPWSTR>(name);
}

// The listed pins are registry data, for programs that look for filters by them; the filters' own pins have
// other names, and the receiver's output is listed as leading to an "Output".

constexpr REGPINTYPES rtpType{&MEDIATYPE_Rtp, &MEDIASUBTYPE_Rtp};
const REGPINTYPES transportType{&MEDIATYPE_Stream, &MEDIASUBTYPE_MPEG2_TRANSPORT};

const std::array senderPins{
    REGFILTERPINS{pinName("Input"_w), FALSE, FALSE, FALSE, TRUE, &GUID_NULL, "Output"_w, 1, &rtpType},
    REGFILTERPINS{pinName("Output"_w), FALSE, TRUE, FALSE, FALSE, &GUID_NULL, "Input"_w, 1, &rtpType},
};
const std::array receiverPins{
    REGFILTERPINS{pinName("InputRtpFec"_w), FALSE, FALSE, FALSE, FALSE, &GUID_NULL, "Output"_w, 1,
                  &transportType},
    REGFILTERPINS{pinName("OutputRtp"_w), FALSE, TRUE, FALSE, FALSE, &GUID_NULL, "Output"_w, 1,
                  &transportType},
};

constexpr auto senderName = "Morvane FEC over RTP Filter"_w;
constexpr auto receiverName = "Morvane Rtp Fec In"_w;

const FilterSetup senderSetup{&CLSID_RtpFecFilter, senderName, MERIT_DO_NOT_USE, senderPins};
const FilterSetup receiverSetup{&CLSID_RtpFecIn, receiverName, MERIT_DO_NOT_USE, receiverPins};

const std::array<FactoryTemplate, 2> templates{{
    {senderName, &CLSID_RtpFecFilter, CRtpFecFilter::CreateInstance, nullptr, &senderSetup},
    {receiverName, &CLSID_RtpFecIn, CRtpFecIn::CreateInstance, nullptr, &receiverSetup},
}};

[[maybe_unused]] const bool handedOver =
    (SetFactoryTemplates(templates.data(), static_cast<int>(templates.size())), true);

}  // namespace

}  // namespace mvrtpfec
