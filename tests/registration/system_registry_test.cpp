#include <array>
#include <string>

#include <gtest/gtest.h>

#include "platform/module/registration_system.h"

namespace {

using platform::RegistryKey;

/// A key of the test's own in the system's registry, closed and gone with the test.
class SystemRegistry : public testing::Test {
protected:
    SystemRegistry() { EXPECT_EQ(system_.createKey(nullptr, name_, &key_), 0U); }
    ~SystemRegistry() override {
        system_.closeKey(key_);
        EXPECT_EQ(system_.deleteKey(nullptr, name_), 0U);
        EXPECT_EQ(system_.openKey(nullptr, name_, &key_), fileNotFound);
    }

    std::string subkey(DWORD index) {
        std::array<char, 260> name{};
        return system_.enumerateKey(key_, index, name) == 0 ? name.data() : "";
    }

    static constexpr auto name_ = "MVRtpFec.Test";
    static constexpr DWORD fileNotFound = 2;
    platform::RegistrationSystem& system_ = platform::registrationSystem();
    RegistryKey key_ = nullptr;
};

TEST_F(SystemRegistry, KeysStandBelowTheirParents) {
    RegistryKey one = nullptr;
    RegistryKey inner = nullptr;
    ASSERT_EQ(system_.createKey(key_, "One\\Inner", &inner), 0U);
    ASSERT_EQ(system_.openKey(key_, "One", &one), 0U);
    EXPECT_EQ(subkey(0), "One");
    EXPECT_EQ(subkey(1), "");
    EXPECT_EQ(system_.setValue(inner, nullptr, "text"), 0U);
    EXPECT_EQ(system_.setValue(inner, "Named", ""), 0U);
    system_.closeKey(inner);
    EXPECT_NE(system_.deleteKey(key_, "One"), 0U) << "with a key below";
    EXPECT_EQ(system_.deleteKey(one, "Inner"), 0U);
    system_.closeKey(one);
    EXPECT_EQ(system_.deleteKey(key_, "One"), 0U);
    EXPECT_EQ(subkey(0), "");
    EXPECT_EQ(system_.deleteKey(key_, "One"), fileNotFound);
}

}  // namespace
