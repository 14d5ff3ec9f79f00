#include <gtest/gtest.h>

#include "framework/base/com_ptr.h"
#include "platform/wide_literal.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"

namespace mvrtpfec {

namespace {

using platform::operator""_w;

CComPtr<IPin> pinOf(CUnknown* created, LPCWSTR name, CComPtr<IBaseFilter>& filter) {
    void* found = nullptr;
    created->NonDelegatingQueryInterface(IID_IBaseFilter, &found);
    filter.Attach(static_cast<IBaseFilter*>(found));
    CComPtr<IPin> pin;
    filter->FindPin(name, &pin);
    return pin;
}

/// The sender insists on 16 buffers, the receiver on 100.
TEST(DirectConnection, OfTheTwoFiltersIsRefusedAndLeavesBothFree) {
    CComPtr<IBaseFilter> sender;
    CComPtr<IBaseFilter> receiver;
    const auto output = pinOf(CRtpFecFilter::CreateInstance(nullptr, nullptr), "FECA"_w, sender);
    const auto input = pinOf(CRtpFecIn::CreateInstance(nullptr, nullptr), "Input #2"_w, receiver);
    EXPECT_EQ(output->Connect(input, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    CComPtr<IPin> other;
    EXPECT_EQ(output->ConnectedTo(&other), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(input->ConnectedTo(&other), VFW_E_NOT_CONNECTED);
}

}  // namespace

}  // namespace mvrtpfec
