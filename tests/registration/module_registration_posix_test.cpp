#include <filesystem>

#include <gtest/gtest.h>

#include "platform/module/loaded_module.h"
#include "platform/process/process.h"

// Where nothing of the system's is written to: natively a module registers itself in its own memory.

namespace {

namespace fs = std::filesystem;
using platform::LoadedModule;

const fs::path folder = platform::programPath().parent_path();

TEST(ModuleRegistration, ComesAndGoes) {
    const LoadedModule module(folder / "MVRtpFec.ax");
    EXPECT_EQ(module.unregisterServer(), S_OK) << "never registered";
    EXPECT_EQ(module.registerServer(), S_OK);
    EXPECT_EQ(module.registerServer(), S_OK);
    EXPECT_EQ(module.unregisterServer(), S_OK);
    EXPECT_EQ(module.unregisterServer(), S_OK);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(ModuleRegistration, FailsWhereThePathIsLongerThanTheSystemTells) {
    const fs::path deep = folder / "registration_deep" / std::string(200, 'd') / std::string(200, 'e');
    fs::create_directories(deep);
    fs::copy_file(folder / "MVRtpFec.ax", deep / "MVRtpFec.ax", fs::copy_options::overwrite_existing);
    {
        const LoadedModule module(deep / "MVRtpFec.ax");
        constexpr auto insufficientBuffer = static_cast<HRESULT>(0x8007007A);
        EXPECT_EQ(module.registerServer(), insufficientBuffer);
        EXPECT_EQ(module.unregisterServer(), insufficientBuffer);
    }
    fs::remove_all(folder / "registration_deep");
}

}  // namespace
