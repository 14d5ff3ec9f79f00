#include <gtest/gtest.h>

#include "rtp_media/chain/sample_bytes.h"
#include "tests/rtp_media/chain/collected_units.h"

namespace mvrtpfec::test {
namespace {

TEST(SimpleMediaData, TellsWhatWasSetAndWhatNot) {
    const auto sample = sampleOf(Bytes{1, 2, 3});
    REFERENCE_TIME start = 7;
    REFERENCE_TIME stop = 7;
    std::uint64_t id = 7;
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(sample->GetMediaTime(&start, &stop), VFW_E_MEDIA_TIME_NOT_SET);
    EXPECT_FALSE(sample->GetDataId(id));
    EXPECT_TRUE(start == 7 && stop == 7 && id == 7);

    REFERENCE_TIME begin = 500;
    EXPECT_EQ(sample->SetTime(&begin, nullptr), S_OK);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(start, 500);
    sample->SetDataId(5);
    EXPECT_TRUE(sample->GetDataId(id) && id == 5);
    void* object = sample.p;
    EXPECT_EQ(sample->QueryInterface(IID_IUnknown, &object), E_NOINTERFACE);
}

TEST(SimpleMediaData, GivesItsBytesUpToTheActualLength) {
    const auto sample = sampleOf(Bytes{1, 2, 3});
    EXPECT_EQ(sample->SetActualDataLength(4), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->SetActualDataLength(2), S_OK);
    EXPECT_EQ(sampleBytes(*sample.p).size(), 2U);
    sample->SetActualDataLength(-1);
    EXPECT_TRUE(sampleBytes(*sample.p).empty());
    EXPECT_TRUE(sampleBytes(*sampleOf(Bytes{}).p).empty());
}

}  // namespace
}  // namespace mvrtpfec::test
