#include "framework/registration/registration.h"

#include <gtest/gtest.h>

#include "framework/registration/class_keys.h"
#include "platform/text/ansi_text.h"
#include "tests/registration/trial_registration.h"

// The module's own table is linked in, so that what it says is tested with what is done with it.

namespace mvrtpfec {
namespace {

using trial::TrialRegistration;

const std::string sender = "CLSID\\{3EDB9832-D645-4FB0-B987-A02069F40F20}";
const std::string receiver = "CLSID\\{A1BBBAC0-5734-4514-8F52-46A138A5B5E8}";

HRESULT enter(TrialRegistration& system) {
    return enterModule(system, nullptr, factoryTemplates());
}

HRESULT remove(TrialRegistration& system) {
    return removeModule(system, nullptr, factoryTemplates());
}

std::string describe(const platform::MemoryRegistration::Pin& pin) {
    std::string text = "  " + platform::ansiFromWide(pin.name) + ':';
    if (pin.rendered) text += " rendered";
    if (pin.output) text += " output";
    if (pin.zero) text += " zero";
    if (pin.many) text += " many";
    text += " -> " + registryForm(pin.connectsToFilter) + ' ' + platform::ansiFromWide(pin.connectsToPin);
    for (const auto& [major, subtype] : pin.types)
        text += "\n    " + registryForm(major) + '/' + registryForm(subtype);
    return text + '\n';
}

std::string listed(const TrialRegistration& system) {
    std::string text;
    for (const auto& filter : system.filters()) {
        text += registryForm(filter.classId) + ' ' + platform::ansiFromWide(filter.name) + ' ' +
                std::to_string(filter.merit) + '\n';
        for (const auto& pin : filter.pins) text += describe(pin);
    }
    return text;
}

const std::string bothFilters =
    "{3EDB9832-D645-4FB0-B987-A02069F40F20} Morvane FEC over RTP Filter 2097152\n"
    "  Input: many -> {00000000-0000-0000-0000-000000000000} Output\n"
    "    {1ACFFBF0-54E2-4ADF-8676-5FEB921330FA}/{0E461559-0CE5-4E63-A6A3-2C84F9CAE251}\n"
    "  Output: output -> {00000000-0000-0000-0000-000000000000} Input\n"
    "    {1ACFFBF0-54E2-4ADF-8676-5FEB921330FA}/{0E461559-0CE5-4E63-A6A3-2C84F9CAE251}\n"
    "{A1BBBAC0-5734-4514-8F52-46A138A5B5E8} Morvane Rtp Fec In 2097152\n"
    "  InputRtpFec: -> {00000000-0000-0000-0000-000000000000} Output\n"
    "    {E436EB83-524F-11CE-9F53-0020AF0BA770}/{E06D8023-DB46-11CF-B4D1-00805F6CBBEA}\n"
    "  OutputRtp: output -> {00000000-0000-0000-0000-000000000000} Output\n"
    "    {E436EB83-524F-11CE-9F53-0020AF0BA770}/{E06D8023-DB46-11CF-B4D1-00805F6CBBEA}\n";

using Routine = HRESULT (*)(TrialRegistration&);

TEST(Registration, WritesKeysAndListsFiltersAndTakesBothBack) {
    for (const char* missing : {"", "make mapper 2"}) {
        TrialRegistration system;
        system.failAlways = missing;
        for (const char* again : {"", "after a second registration"}) {
            EXPECT_EQ(enter(system), S_OK);
            EXPECT_EQ(listed(system), bothFilters) << missing << again;
        }
        const auto& classes = system.root().keys.at("CLSID")->keys;
        for (const auto& [key, name] :
             {std::pair{sender, "Morvane FEC over RTP Filter"}, std::pair{receiver, "Morvane Rtp Fec In"}}) {
            EXPECT_EQ(classes.at(key.substr(6))->values.at(""), name);
            const auto& server = *classes.at(key.substr(6))->keys.at("InprocServer32");
            EXPECT_EQ(server.values.at(""), trial::modulePath);
            EXPECT_EQ(server.values.at("ThreadingModel"), "Both");
        }
        for (const char* again : {"", "what isn't registered"}) {
            EXPECT_EQ(remove(system), S_OK) << again;
            EXPECT_EQ(listed(system), "");
            EXPECT_TRUE(classes.empty());
            EXPECT_TRUE(system.balanced());
        }
    }
}

/// The keys stand before a filter is listed, and go when none is any more.
TEST(Registration, KeysOutliveTheList) {
    TrialRegistration system;
    enter(system);
    expectOrder(system.journal, {"path in 260", "create " + sender, "create " + receiver, "initialize",
                                 "UnregisterFilter", "RegisterFilter", "free libraries", "uninitialize"});
    system.journal.clear();
    remove(system);
    expectOrder(system.journal, {"initialize", "UnregisterFilter", "free libraries", "uninitialize",
                                 "delete InprocServer32", "delete " + sender, "delete " + receiver});
}

TEST(Registration, NoMapperAtAllIsAFailureThatLeavesTheKeys) {
    for (const Routine routine : {enter, remove}) {
        TrialRegistration system;
        system.failAlways = "make";
        enter(system);
        EXPECT_EQ(routine(system), REGDB_E_CLASSNOTREG);
        EXPECT_EQ(system.root().keys.at("CLSID")->keys.size(), 2U);
        EXPECT_TRUE(system.balanced());
    }
}

/// What a run ends with in which one call fails.
HRESULT outcomeOf(const std::string& failed, bool registering, bool older) {
    const auto of = [&](const char* call) { return failed.starts_with(call); };
    if (of("path")) return trial::result(0x8007007E);
    if (of("create") || of("set")) return trial::result(0x80070005);
    if (of("Register") || of("Unregister")) return trial::mapperError;
    if (older && failed == "make mapper") return REGDB_E_CLASSNOTREG;
    EXPECT_TRUE(of("initialize") || of("make") || !registering) << failed;
    return S_OK;
}

/// Nothing but putting away follows a failure that ends the run.
bool endsWith(const TrialRegistration& system) {
    auto at = std::find(system.journal.rbegin(), system.journal.rend(), system.failed);
    return std::all_of(system.journal.rbegin(), at, [](const std::string& entry) {
        return entry == "close" || entry == "free libraries" || entry == "uninitialize";
    });
}

/// Fails each call in turn until a run has none left to fail.
void failEachCall(Routine routine, bool registering, bool older) {
    for (int call = 1;; ++call) {
        TrialRegistration system;
        if (older) system.failAlways = "make mapper 2";
        if (!registering) enter(system);
        system.failed.clear();
        system.failAt = system.callCount() + call;
        const HRESULT result = routine(system);
        EXPECT_TRUE(system.balanced()) << system.failed;
        if (system.callCount() < system.failAt) {
            EXPECT_EQ(result, S_OK);
            EXPECT_GT(call, 15) << "there was little to fail";
            return;
        }
        EXPECT_EQ(result, outcomeOf(system.failed, registering, older)) << system.failed;
        EXPECT_TRUE(SUCCEEDED(result) || endsWith(system)) << system.failed;
    }
}

TEST(Registration, EachFailingCallEndsItAndLeavesNothingOpen) {
    for (const bool older : {false, true}) {
        failEachCall(enter, true, older);
        failEachCall(remove, false, older);
    }
}

TEST(Registration, DeletesSubkeysToAnyDepthAndLeavesOtherClasses) {
    TrialRegistration system;
    enter(system);
    platform::RegistryKey key = nullptr;
    const std::string longest(259, 'k');
    for (const std::string& name : {sender + "\\InprocServer32\\a\\b", sender + "\\InprocServer32\\a\\c",
                                    receiver + '\\' + longest, std::string("CLSID\\{other}\\a")})
        system.MemoryRegistration::createKey(nullptr, name.c_str(), &key);
    EXPECT_EQ(remove(system), S_OK);
    const auto& classes = system.root().keys.at("CLSID")->keys;
    ASSERT_EQ(classes.size(), 1U);
    EXPECT_EQ(classes.at("{other}")->keys.size(), 1U);
    EXPECT_TRUE(system.balanced());
}

TEST(Registration, KeysThatCannotBeDeletedAreLeft) {
    for (const auto* stubborn : {"delete", "enumerate", "open"}) {
        TrialRegistration system;
        enter(system);
        system.failAlways = stubborn;
        EXPECT_EQ(remove(system), S_OK) << stubborn;
        EXPECT_EQ(system.root().keys.at("CLSID")->keys.size(), 2U);
        EXPECT_TRUE(system.balanced());
    }
}

TEST(Registration, RowsWithoutSetupAreNotListed) {
    std::vector<FactoryTemplate> rows(factoryTemplates().begin(), factoryTemplates().end());
    rows.front().setup = nullptr;
    TrialRegistration system;
    EXPECT_EQ(enterModule(system, nullptr, rows), S_OK);
    EXPECT_EQ(system.root().keys.at("CLSID")->keys.size(), 2U);
    ASSERT_EQ(system.filters().size(), 1U);
    EXPECT_EQ(system.filters().front().pins.size(), 2U);
}

}  // namespace
}  // namespace mvrtpfec
