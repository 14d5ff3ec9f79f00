#include <cstddef>
#include <limits>

#include <gtest/gtest.h>

#include "framework/base/com_ptr.h"
#include "framework/base/mem_allocator.h"
#include "framework/samples/external_metadata_media_sample.h"
#include "framework/samples/metadata_access.h"
#include "support/com_exception.h"
#include "tests/framework/foreign_sample.h"

namespace mvrtpfec::testing {
namespace {

using Properties = AM_SAMPLE2_PROPERTIES;

class Sample : public ::testing::Test {
protected:
    Properties properties(DWORD size = sizeof(Properties)) {
        Properties record{};
        EXPECT_EQ(sample->GetProperties(size, reinterpret_cast<BYTE*>(&record)), S_OK);
        return record;
    }
    HRESULT put(const Properties& record, std::size_t size = sizeof(Properties)) {
        return sample->SetProperties(static_cast<DWORD>(size), reinterpret_cast<const BYTE*>(&record));
    }
    /// What SetProperties says to the sample's own record after a change, and whether it changed anything.
    template <class Change>
    HRESULT putChanged(Change change) {
        Properties record = properties();
        const DWORD changed = ++record.dwStreamId;
        change(record);
        const HRESULT result = put(record);
        EXPECT_EQ(properties().dwStreamId == changed, result == S_OK);
        return result;
    }

    BYTE payload[16]{};
    CComPtr<COOBMediaSample> sample{new COOBMediaSample(payload, sizeof(payload))};
};

TEST_F(Sample, timesAreKnownAsFarAsTheyWereSet) {
    REFERENCE_TIME start = 10, stop = 20, gotStart = 0, gotStop = 0;
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_E_SAMPLE_TIME_NOT_SET);
    sample->SetTime(&start, &stop);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), S_OK);
    EXPECT_EQ(gotStop, 20);
    sample->SetTime(&start, nullptr);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(gotStart, 10);
    EXPECT_EQ(gotStop, 11);
    start = std::numeric_limits<REFERENCE_TIME>::max();
    sample->SetTime(&start, nullptr);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_S_NO_STOP_TIME);
    sample->SetTime(nullptr, &stop);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_E_SAMPLE_TIME_NOT_SET);
}

TEST_F(Sample, mediaTimeKeepsTheLowerHalfOfItsDuration) {
    LONGLONG start = std::numeric_limits<LONGLONG>::min(), stop = 5, gotStart = 0, gotStop = 0;
    EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), VFW_E_MEDIA_TIME_NOT_SET);
    sample->SetMediaTime(&start, &stop);
    EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), S_OK);
    EXPECT_EQ(gotStart, start);
    EXPECT_EQ(gotStop, start + 5);
    EXPECT_EQ(properties().dwSampleFlags, 0u);
    sample->SetMediaTime(nullptr, nullptr);
    EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), VFW_E_MEDIA_TIME_NOT_SET);
}

TEST_F(Sample, withoutPayloadThereIsNoPointer) {
    CComPtr<COOBMediaSample> bare(new COOBMediaSample(nullptr, 0));
    BYTE* pointer = payload;
    EXPECT_EQ(bare->GetPointer(&pointer), E_FAIL);
    EXPECT_EQ(sample->GetPointer(nullptr), E_POINTER);
    EXPECT_EQ(sample->GetTime(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(sample->GetMediaTime(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(sample->GetMediaType(nullptr), E_POINTER);
    EXPECT_EQ(sample->SetActualDataLength(17), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->GetActualDataLength(), 16);
}

TEST_F(Sample, propertiesAreRefusedWholeOrTakenWhole) {
    EXPECT_EQ(putChanged([](Properties&) {}), S_OK);
    EXPECT_EQ(putChanged([](Properties& record) { record.pbBuffer = nullptr; }), S_OK);
    for (const DWORD flags : {0x20u, 0x200u, 0x80000000u})
        EXPECT_EQ(putChanged([&](Properties& record) { record.dwSampleFlags = flags; }), E_INVALIDARG);
    EXPECT_EQ(putChanged([&](Properties& record) { record.pbBuffer = payload + 1; }), E_INVALIDARG);
    EXPECT_EQ(putChanged([](Properties& record) { record.cbBuffer = 15; }), E_INVALIDARG);
    EXPECT_EQ(putChanged([](Properties& record) { record.lActual = 17; }), E_INVALIDARG);
    EXPECT_EQ(putChanged([](Properties& record) { record.cbData = sizeof(record) + 1; }), E_INVALIDARG);
    EXPECT_EQ(putChanged([](Properties& record) { record.dwSampleFlags = AM_SAMPLE_TYPECHANGED; }),
              E_POINTER);
    EXPECT_EQ(put(properties(), sizeof(Properties) + 1), E_INVALIDARG);
}

TEST_F(Sample, propertiesAreTakenAsFarAsTheSizeCovers) {
    Properties record = properties();
    record.dwTypeSpecificFlags = 3;
    record.dwSampleFlags = 0x1D7;
    record.lActual = 4;
    EXPECT_EQ(put(record, 3), S_OK);
    EXPECT_EQ(put(record, offsetof(Properties, tStop) + 7), E_INVALIDARG) << "a time that isn't there";
    EXPECT_EQ(properties().dwTypeSpecificFlags, 0u);
    REFERENCE_TIME time = 1;
    sample->SetTime(&time, nullptr);
    EXPECT_EQ(put(record, offsetof(Properties, lActual) + 3), S_OK);
    EXPECT_EQ(properties().dwSampleFlags, 0x1D7u);
    EXPECT_EQ(sample->GetActualDataLength(), 16);
    EXPECT_EQ(put(record, offsetof(Properties, lActual) + 4), S_OK);
    EXPECT_EQ(sample->GetActualDataLength(), 4);
    const Properties part = properties(offsetof(Properties, dwSampleFlags));
    EXPECT_EQ(part.dwTypeSpecificFlags, 3u);
    EXPECT_EQ(part.dwSampleFlags, 0u);
    EXPECT_EQ(sample->GetProperties(0, nullptr), S_OK);
    EXPECT_EQ(sample->GetProperties(4, nullptr), E_POINTER);
}

TEST_F(Sample, attachedTypeAndItsFlagGoTogether) {
    CMediaType type(MEDIATYPE_Video, MEDIASUBTYPE_NULL);
    sample->SetMediaType(&type);
    Properties record = properties();
    ASSERT_NE(record.pMediaType, nullptr);
    EXPECT_EQ(put(record), S_OK) << "the sample's own record, the type in it its own";
    EXPECT_EQ(sample->SetMediaType(properties().pMediaType), S_OK);
    EXPECT_EQ(properties().pMediaType->majortype, MEDIATYPE_Video);

    record = properties();
    record.dwSampleFlags = 0;
    EXPECT_EQ(put(record), S_OK);
    AM_MEDIA_TYPE* none = &type;
    EXPECT_EQ(sample->GetMediaType(&none), S_FALSE);
    EXPECT_EQ(none, nullptr);
}

TEST_F(Sample, metadataIsReplacedEmptiedAndRemoved) {
    const BYTE* bytes = payload;
    ULONG count = 9;
    EXPECT_EQ(sample->GetMetaData(MetaData_DataId, &bytes, &count), E_FAIL);
    EXPECT_EQ(bytes, payload);
    EXPECT_EQ(count, 9u);

    SetDataId(sample, 1);
    SetDataId(sample, 0x1122334455667788);
    std::uint64_t id = 0;
    EXPECT_TRUE(GetDataId(sample, id));
    EXPECT_EQ(id, 0x1122334455667788u);
    ASSERT_EQ(sample->GetMetaData(MetaData_DataId, &bytes, &count), S_OK);
    sample->SetMetaData(MetaData_DataId, bytes + 1, 7);  // a part of itself
    ASSERT_EQ(sample->GetMetaData(MetaData_DataId, &bytes, &count), S_OK);
    EXPECT_EQ(count, 7u);
    EXPECT_FALSE(GetDataId(sample, id)) << "no whole record";
    sample->SetMetaData(MetaData_DataId, payload, sizeof(payload));
    EXPECT_TRUE(GetDataId(sample, id)) << "more than a record";
    EXPECT_EQ(id, 0u);

    sample->SetMetaData(MetaData_DataId, nullptr, 0);
    EXPECT_EQ(sample->GetMetaData(MetaData_DataId, &bytes, &count), S_OK);
    EXPECT_EQ(count, 0u);
    RemoveDataId(sample);
    EXPECT_EQ(sample->GetMetaData(MetaData_DataId, &bytes, &count), E_FAIL);
}

TEST(PooledSample, carriesNothingFromOneUseIntoTheNext) {
    CComPtr<IMemAllocator> allocator;
    ASSERT_EQ(CreateMemoryAllocator(&allocator), S_OK);
    ALLOCATOR_PROPERTIES one{1, 64, 1, 0};
    ASSERT_EQ(allocator->SetProperties(&one, &one), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    const auto take = [&] {
        CComPtr<IMediaSample> sample;
        EXPECT_EQ(allocator->GetBuffer(&sample, nullptr, nullptr, AM_GBF_NOWAIT), S_OK);
        return queryFor<IMediaSample3>(sample, IID_IMediaSample3);
    };
    Properties record{};
    {
        const auto sample = take();
        ASSERT_EQ(sample->GetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)), S_OK);
        CMediaType type(MEDIATYPE_Video, MEDIASUBTYPE_NULL);
        record.dwSampleFlags = 0x1DF;
        record.dwStreamId = record.dwTypeSpecificFlags = 9;
        record.pMediaType = &type;
        ASSERT_EQ(sample->SetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)), S_OK);
        for (LONG key = 0; key < 6; ++key) sample->SetMetaData(static_cast<MetaDataType>(key), nullptr, 0);
    }
    const auto sample = take();
    ASSERT_EQ(sample->GetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)), S_OK);
    EXPECT_EQ(record.dwSampleFlags, 0u);
    EXPECT_EQ(record.dwStreamId | record.dwTypeSpecificFlags, 0u);
    EXPECT_EQ(record.pMediaType, nullptr);
    const BYTE* bytes = nullptr;
    ULONG count = 0;
    for (LONG key = 0; key < 6; ++key)
        EXPECT_EQ(sample->GetMetaData(static_cast<MetaDataType>(key), &bytes, &count), E_FAIL);
}

class SampleWithAttributesOfItsOwn : public Sample {
protected:
    HRESULT failureOver(IMediaSample& external) {
        try {
            wrap(external);
            return S_OK;
        } catch (const mvn::COMException& error) {
            return error.result();
        }
    }
    static CComPtr<CExternalMetaDataMediaSample> wrap(IMediaSample& external) {
        return {new CExternalMetaDataMediaSample(&external)};
    }
    static HRESULT ask(IMediaSample* object, REFIID riid) {
        CComPtr<IUnknown> answer;
        return object->QueryInterface(riid, reinterpret_cast<void**>(&answer));
    }
};

TEST_F(SampleWithAttributesOfItsOwn, startsAsACopyAndThenGoesItsOwnWay) {
    REFERENCE_TIME start = 1, stop = 2;
    CMediaType type(MEDIATYPE_Video, MEDIASUBTYPE_NULL);
    sample->SetTime(&start, &stop);
    sample->SetMediaTime(&start, &stop);
    sample->SetMediaType(&type);
    sample->SetPreroll(TRUE);
    SetRecordingEvent(sample, 0xBEEF);
    sample->SetMetaData(MetaData_CuePoint, nullptr, 0);

    const auto copy = wrap(*sample.p);
    EXPECT_EQ(copy->IsPreroll(), S_OK);
    EXPECT_EQ(copy->GetMediaTime(&start, &stop), S_OK);
    std::uint16_t event = 0;
    EXPECT_TRUE(GetRecordingEvent(copy, event));
    EXPECT_EQ(event, 0xBEEF);
    const BYTE* bytes = nullptr;
    ULONG count = 1;
    EXPECT_EQ(copy->GetMetaData(MetaData_CuePoint, &bytes, &count), S_OK);
    EXPECT_EQ(copy->GetMetaData(MetaData_SampleDate, &bytes, &count), E_FAIL);
    Properties record{};
    ASSERT_EQ(copy->GetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)), S_OK);
    EXPECT_EQ(record.dwSampleFlags, properties().dwSampleFlags);
    EXPECT_EQ(record.pbBuffer, payload);
    EXPECT_NE(record.pMediaType, properties().pMediaType);

    copy->SetMediaType(nullptr);
    RemoveRecordingEvent(copy);
    EXPECT_NE(properties().pMediaType, nullptr);
    EXPECT_TRUE(GetRecordingEvent(sample, event));
    EXPECT_EQ(copy->SetActualDataLength(5), S_OK);
    EXPECT_EQ(sample->GetActualDataLength(), 5);
}

TEST_F(SampleWithAttributesOfItsOwn, answersWhatTheOtherAnswersAndNeverIUnknown) {
    const auto over3 = wrap(*sample.p);
    for (REFIID riid : {IID_IMediaSample, IID_IMediaSample2, IID_IMediaSample3})
        EXPECT_EQ(ask(over3, riid), S_OK);
    EXPECT_EQ(ask(over3, IID_IUnknown), E_NOINTERFACE);

    ForeignSample foreign;
    {
        const auto over1 = wrap(foreign);
        EXPECT_EQ(ask(over1, IID_IMediaSample), S_OK);
        EXPECT_EQ(ask(over1, IID_IMediaSample2), E_NOINTERFACE);
        EXPECT_EQ(ask(over1, IID_IMediaSample3), E_NOINTERFACE);
        EXPECT_EQ(ask(over1, IID_IUnknown), E_NOINTERFACE);
        EXPECT_EQ(foreign.references, 1);
    }
    EXPECT_EQ(foreign.references, 0);
}

TEST_F(SampleWithAttributesOfItsOwn, copiesFromSamplesOfLesserInterfaces) {
    ForeignSample foreign;
    REFERENCE_TIME start = 0, stop = 0;
    const auto over1 = wrap(foreign);
    EXPECT_EQ(over1->GetTime(&start, &stop), S_OK);
    EXPECT_EQ(stop, 200);
    EXPECT_EQ(over1->GetMediaTime(&start, &stop), S_OK);
    EXPECT_EQ(stop, 9);
    EXPECT_EQ(over1->IsSyncPoint(), S_OK);
    EXPECT_EQ(over1->IsDiscontinuity(), S_OK);
    EXPECT_EQ(over1->IsPreroll(), S_FALSE);
    EXPECT_EQ(over1->GetActualDataLength(), 3);

    foreign.answersMediaSample2 = true;
    foreign.timeResult = VFW_S_NO_STOP_TIME;
    foreign.mediaTimeResult = VFW_E_MEDIA_TIME_NOT_SET;
    const auto over2 = wrap(foreign);
    EXPECT_EQ(over2->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(over2->GetMediaTime(&start, &stop), VFW_E_MEDIA_TIME_NOT_SET);
    Properties record{};
    over2->GetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record));
    EXPECT_EQ(record.dwStreamId, 5u);
}

TEST_F(SampleWithAttributesOfItsOwn, failingStepThrowsItsResultAndKeepsNothing) {
    for (HRESULT ForeignSample::*step :
         {&ForeignSample::timeResult, &ForeignSample::mediaTimeResult, &ForeignSample::typeResult}) {
        ForeignSample foreign;
        foreign.*step = E_UNEXPECTED;
        EXPECT_EQ(failureOver(foreign), E_UNEXPECTED);
        EXPECT_EQ(foreign.references, 0);
    }
    ForeignSample foreign;
    foreign.answersMediaSample2 = true;
    foreign.propertyFlags = 0x400;
    EXPECT_EQ(failureOver(foreign), E_INVALIDARG);
    foreign.propertiesResult = E_ACCESSDENIED;
    EXPECT_EQ(failureOver(foreign), E_ACCESSDENIED);
    EXPECT_EQ(foreign.references, 0);
}

}  // namespace
}  // namespace mvrtpfec::testing
