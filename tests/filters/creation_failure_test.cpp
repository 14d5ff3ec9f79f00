#include <algorithm>
#include <initializer_list>
#include <string>
#include <system_error>
#include <utility>

#include <gtest/gtest.h>

#include "mvrtpfec/rtp_fec_filter.h"
#include "mvrtpfec/rtp_fec_in.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"
#include "support/log/queued_logger.h"
#include "tests/filters/fault_injection.h"
#include "tests/shared/created_filter.h"
#include "tests/shared/object_count.h"

namespace mvrtpfec {

namespace {

constexpr HRESULT refused = HRESULT_FROM_WIN32(FaultInjection::error);

struct Creation {
    CUnknown* filter;
    HRESULT result;
    bool fired;
};

Creation createWith(Resource resource, std::size_t n, CreationFunction create) {
    const FaultInjection fault(resource, n);
    HRESULT result = S_OK;
    CUnknown* filter = create(nullptr, &result);
    return {filter, result, fault.fired()};
}

void destroy(CUnknown* filter) {
    filter->NonDelegatingAddRef();
    filter->NonDelegatingRelease();
}

/// Fails the first request, then the second, ... until creation needs no more, and returns how many that
/// were. A failed creation must say why and leave nothing behind.
std::size_t failEach(Resource resource, CreationFunction create, std::initializer_list<HRESULT> expected) {
    const LONG objects = CBaseObject::ObjectsActive();
    for (std::size_t n = 0;; ++n) {
        const std::ptrdiff_t blocks = blocksInUse();
        const Creation creation = createWith(resource, n, create);
        const std::ptrdiff_t left = blocksInUse() - blocks;
        if (creation.filter != nullptr) destroy(creation.filter);
        EXPECT_EQ(CBaseObject::ObjectsActive(), objects) << n;
        if (!creation.fired) return n;
        EXPECT_NE(std::ranges::find(expected, creation.result), expected.end())
            << n << ": " << creation.result;
        EXPECT_EQ(creation.filter != nullptr, creation.result == S_OK) << n;
        if (creation.filter == nullptr) {
            EXPECT_EQ(left, 0) << n;
        }
    }
}

TEST(CreationFailure, OfTheSenderLeaksNothing) {
    EXPECT_GE(failEach(Resource::memory, CRtpFecFilter::CreateInstance, {E_OUTOFMEMORY}), 1u);
    EXPECT_EQ(failEach(Resource::event, CRtpFecFilter::CreateInstance, {}), 0u);
}

TEST(CreationFailure, OfTheReceiverLeaksNothing) {
    // Without memory for its semaphore or event, the system refuses it; without memory for its thread there
    // is no worker.
    const std::initializer_list<HRESULT> memory{E_OUTOFMEMORY, HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY),
                                                S_OK};
    EXPECT_GE(failEach(Resource::memory, CRtpFecIn::CreateInstance, memory), 10u);
    EXPECT_EQ(failEach(Resource::semaphore, CRtpFecIn::CreateInstance, {refused}), 1u);
    EXPECT_EQ(failEach(Resource::event, CRtpFecIn::CreateInstance, {refused}), 1u);
    EXPECT_EQ(failEach(Resource::criticalSection, CRtpFecIn::CreateInstance, {refused}), 2u);
}

/// There is nobody to tell; the filter must live, stop and die all the same.
TEST(CreationFailure, WithoutAWorkerTheReceiverStandsStill) {
    const ObjectCount objects;
    const Creation creation = createWith(Resource::thread, 0, CRtpFecIn::CreateInstance);
    ASSERT_TRUE(creation.fired);
    ASSERT_EQ(creation.result, S_OK);
    const auto filter = filterOf(creation.filter);
    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(filter->Stop(), S_OK);
}

TEST(CreationFailure, OfTheLoggerTellsTheSystemsNumber) {
    for (const auto& [resource, name] :
         {std::pair(Resource::thread, "log thread"), std::pair(Resource::semaphore, "semaphore")}) {
        const FaultInjection fault(resource, 0);
        try {
            const mvn::log::QueuedLogger logger({});
            ADD_FAILURE() << name;
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.what(), std::string(name) + ": Win32 error 1450");
        }
    }
}

/// A pause that finds no memory fails as any other, and the next one succeeds.
TEST(CreationFailure, OfWhatAPauseBuilds) {
    HRESULT result = S_OK;
    for (const CreationFunction create : {&CRtpFecFilter::CreateInstance, &CRtpFecIn::CreateInstance}) {
        const auto filter = makeFilter(create);
        setMatrix(filter, 3, 4, 4);
        bool fired = true;
        for (std::size_t n = 0; fired; ++n) {
            {
                const FaultInjection fault(Resource::memory, n);
                result = filter->Pause();
                fired = fault.fired();
            }
            EXPECT_EQ(result, fired ? E_FAIL : S_OK) << n;
            EXPECT_EQ(filter->Stop(), S_OK);
        }
    }
}

}  // namespace

}  // namespace mvrtpfec
