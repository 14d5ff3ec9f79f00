#include <array>
#include <thread>

#include <gtest/gtest.h>

#include "mvrtpfec/rtp_fec_filter.h"
#include "mvrtpfec/rtp_fec_in.h"
#include "platform/component/com_ptr.h"
#include "platform/module/filter_mapper.h"
#include "platform/module/loaded_module.h"
#include "platform/process/process.h"
#include "tests/registration/footprint.h"

namespace {

using platform::CComPtr;
using platform::LoadedModule;

std::filesystem::path moduleFile() {
    return platform::programPath().parent_path() / "MVRtpFec.ax";
}

CComPtr<IClassFactory> factoryOf(const LoadedModule& module, REFCLSID classId) {
    CComPtr<IClassFactory> factory;
    void* object = nullptr;
    EXPECT_EQ(module.getClassObject(classId, IID_IClassFactory, &object), S_OK);
    factory.Attach(static_cast<IClassFactory*>(object));
    return factory;
}

template <class Interface>
CComPtr<Interface> create(const LoadedModule& module, REFCLSID classId, REFIID riid,
                          IUnknown* outer = nullptr) {
    CComPtr<Interface> created;
    void* object = nullptr;
    EXPECT_EQ(factoryOf(module, classId)->CreateInstance(outer, riid, &object), S_OK);
    created.Attach(static_cast<Interface*>(object));
    return created;
}

const std::array<CLSID, 2> classes{mvrtpfec::CLSID_RtpFecFilter, mvrtpfec::CLSID_RtpFecIn};

TEST(Module, ServesBothFilters) {
    const LoadedModule module(moduleFile());
    for (const CLSID& classId : classes) {
        const auto filter = create<IBaseFilter>(module, classId, IID_IBaseFilter);
        CLSID reported{};
        ASSERT_EQ(filter->GetClassID(&reported), S_OK);
        EXPECT_EQ(reported, classId);
        EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(Module, FiltersCanBeAggregated) {
    const LoadedModule module(moduleFile());
    // Any object will do as the outer one.
    const auto outer = factoryOf(module, classes[0]);
    for (const CLSID& classId : classes) {
        const auto inner = create<IUnknown>(module, classId, IID_IUnknown, outer);
        const auto filter = platform::queryFor<IBaseFilter>(inner, IID_IBaseFilter);
        ASSERT_NE(filter.p, nullptr);
        EXPECT_TRUE(platform::isSameObject(filter, outer));
        EXPECT_FALSE(platform::isSameObject(inner, outer));
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

/// Has exceptions thrown inside the module, for what the runtime keeps of them by thread: on this thread,
/// which outlives the module, and on one that ends before.
void failToPause(IBaseFilter* sender) {
    const auto matrix =
        platform::queryFor<mvrtpfec::IFECoverRTPConfig>(sender, mvrtpfec::IID_IFECoverRTPConfig);
    ASSERT_EQ(matrix->SetMode(1), S_OK);
    ASSERT_EQ(sender->Pause(), E_FAIL) << "without rows and columns";
    std::thread([&] { EXPECT_EQ(sender->Pause(), E_FAIL); }).join();
}

void loadUseAndUnload(int times) {
    for (int i = 0; i < times && !testing::Test::HasFailure(); ++i) {
        const LoadedModule module(moduleFile());
        {
            const auto sender = create<IBaseFilter>(module, classes[0], IID_IBaseFilter);
            const auto receiver = create<IBaseFilter>(module, classes[1], IID_IBaseFilter);
            EXPECT_EQ(module.canUnloadNow(), S_FALSE);
            failToPause(sender);
        }
        EXPECT_EQ(module.canUnloadNow(), S_OK);
    }
}

TEST(Module, LeavesNothingBehindWhenUnloaded) {
    loadUseAndUnload(100);
    const Footprint before = footprint();
    loadUseAndUnload(1000);
    const Footprint after = footprint();
    EXPECT_EQ(after.modules, before.modules);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.memory, before.memory + 64 * 1024);
}

}  // namespace
