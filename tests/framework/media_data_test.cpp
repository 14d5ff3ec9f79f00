#include <array>
#include <string>

#include <gtest/gtest.h>

#include "framework/base/com_ptr.h"
#include "framework/samples/media_data_impl.h"
#include "framework/samples/oob_media_sample.h"
#include "tests/framework/foreign_sample.h"
#include "tests/shared/message_of.h"

namespace mvrtpfec::testing {
namespace {

CComPtr<IMediaData2> wrap(IMediaSample* sample) {
    CComPtr<IMediaData2> wrapper;
    IMediaData2* created = nullptr;
    CreateMediaData2(sample, &created);
    wrapper.Attach(created);
    return wrapper;
}

template <class Record>
Record filled(BYTE value) {
    Record record;
    record.bytes.fill(value);
    return record;
}

TEST(MediaDataWrapper, holdsOneReferenceAndIsNeverQueried) {
    ForeignSample sample;
    IMediaData* wrapper = nullptr;
    CreateMediaData(&sample, &wrapper);
    EXPECT_EQ(sample.references, 1);
    EXPECT_EQ(static_cast<MediaData*>(wrapper)->GetSample(), &sample);
    EXPECT_EQ(sample.references, 1);

    void* untouched = &sample;
    EXPECT_EQ(wrapper->QueryInterface(IID_IUnknown, &untouched), E_NOINTERFACE);
    EXPECT_EQ(untouched, &sample);
    EXPECT_EQ(wrapper->AddRef(), 2u);
    EXPECT_EQ(wrapper->Release(), 1u);
    EXPECT_EQ(wrapper->Release(), 0u);
    EXPECT_EQ(sample.references, 0);
}

TEST(MediaDataWrapper, passesCallsAndAnswersThroughUnchanged) {
    ForeignSample sample;
    sample.answersMediaSample2 = true;
    sample.timeResult = VFW_S_NO_STOP_TIME;
    const auto wrapper = wrap(&sample);
    REFERENCE_TIME start = 0, stop = 0;
    EXPECT_EQ(wrapper->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(stop, 200);
    EXPECT_EQ(wrapper->SetTime(&start, &stop), E_ACCESSDENIED);
    EXPECT_EQ(wrapper->GetMediaTime(&start, &stop), S_OK);
    EXPECT_EQ(stop, 9);
    EXPECT_EQ(wrapper->SetActualDataLength(4), S_OK);
    EXPECT_EQ(wrapper->GetActualDataLength(), 4);
    EXPECT_EQ(wrapper->GetSize(), 8);
    EXPECT_TRUE(wrapper->IsSyncPoint());
    EXPECT_FALSE(wrapper->IsPreroll());
    EXPECT_TRUE(wrapper->IsDiscontinuity());
    EXPECT_EQ(wrapper->SetPreroll(true), E_ACCESSDENIED);
    AM_SAMPLE2_PROPERTIES record{};
    EXPECT_EQ(wrapper->GetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)), S_OK);
    EXPECT_EQ(record.dwStreamId, 5u);
    EXPECT_EQ(wrapper->SetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)), E_ACCESSDENIED);
}

TEST(MediaDataWrapper, metadataComesBackAsItWasSet) {
    CComPtr<COOBMediaSample> sample(new COOBMediaSample(nullptr, 0));
    const auto wrapper = wrap(sample);
    EXPECT_EQ(wrapper->GetCuePoint(), CuePoint{});
    EXPECT_EQ(wrapper->GetSampleDate(), SampleDate{0});
    std::uint64_t id = 42;
    EXPECT_FALSE(wrapper->GetDataId(id));
    EXPECT_EQ(id, 42u);

    wrapper->SetCuePoint(filled<CuePoint>(1));
    wrapper->SetSampleDate({-2});
    wrapper->SetDataId(3);
    wrapper->SetDolbyMetadata(filled<DolbyMetadata>(4));
    wrapper->SetParentalRating(filled<ParentalRating>(5));
    wrapper->SetRecordingEvent(0x0607);
    EXPECT_EQ(wrapper->GetCuePoint(), filled<CuePoint>(1));
    EXPECT_EQ(wrapper->GetSampleDate(), SampleDate{-2});
    EXPECT_TRUE(wrapper->GetDataId(id));
    EXPECT_EQ(id, 3u);
    DolbyMetadata dolby{};
    ParentalRating rating{};
    std::uint16_t event = 0;
    EXPECT_TRUE(wrapper->GetDolbyMetadata(dolby));
    EXPECT_TRUE(wrapper->GetParentalRating(rating));
    EXPECT_TRUE(wrapper->GetRecordingEvent(event));
    EXPECT_EQ(dolby, filled<DolbyMetadata>(4));
    EXPECT_EQ(rating, filled<ParentalRating>(5));
    EXPECT_EQ(event, 0x0607);

    const std::array<ULONG, 6> sizes{24, 8, 8, 84, 5144, 2};
    const BYTE* bytes = nullptr;
    ULONG size = 0;
    for (std::size_t key = 0; key < sizes.size(); ++key) {
        ASSERT_EQ(sample->GetMetaData(static_cast<MetaDataType>(key), &bytes, &size), S_OK);
        EXPECT_EQ(size, sizes[key]) << key;
    }
}

TEST(MediaDataWrapper, withoutACarrierMetadataThrowsTheKindsOwnText) {
    const std::string needs = " management needs IMediaSample3 interface";
    ForeignSample foreign;
    for (IMediaSample* sample : {static_cast<IMediaSample*>(&foreign), static_cast<IMediaSample*>(nullptr)}) {
        const auto wrapper = wrap(sample);
        std::uint64_t id = 0;
        DolbyMetadata dolby{};
        ParentalRating rating{};
        std::uint16_t event = 0;
        EXPECT_EQ(messageOf([&] { wrapper->SetCuePoint({}); }), "Cue Point" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->GetCuePoint(); }), "Cue Point" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->SetSampleDate({}); }), "Sample Date" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->GetSampleDate(); }), "Sample Date" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->SetDataId(id); }), "DataId" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->GetDataId(id); }), "DataId" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->SetDolbyMetadata(dolby); }), "DolbyMetadata" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->GetDolbyMetadata(dolby); }), "DataId" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->SetParentalRating(rating); }), "\"Parental Rating\"" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->GetParentalRating(rating); }), "\"Parental Rating\"" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->SetRecordingEvent(event); }), "recording event" + needs);
        EXPECT_EQ(messageOf([&] { wrapper->GetRecordingEvent(event); }), "recording event" + needs);
    }
    EXPECT_EQ(foreign.references, 0);
}

TEST(MediaDataWrapper, withoutASampleForwardersAnswerPlainly) {
    const auto wrapper = wrap(nullptr);
    BYTE* payload = nullptr;
    EXPECT_EQ(wrapper->GetPointer(&payload), E_POINTER);
    EXPECT_EQ(wrapper->GetSize(), 0);
    EXPECT_FALSE(wrapper->IsSyncPoint());
    EXPECT_EQ(wrapper->GetProperties(0, nullptr), E_POINTER);
}

}  // namespace
}  // namespace mvrtpfec::testing
