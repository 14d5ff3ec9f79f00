#include "framework/registration/class_factory.h"

#include <array>
#include <stdexcept>

#include <gtest/gtest.h>

#include "framework/registration/module_server.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {
namespace {

using platform::operator""_w;

constexpr CLSID workingClass{1, 0, 0, {}};
constexpr CLSID nothingClass{2, 0, 0, {}};
constexpr CLSID refusedClass{3, 0, 0, {}};
constexpr CLSID spoiltClass{4, 0, 0, {}};
constexpr CLSID throwingClass{5, 0, 0, {}};
constexpr CLSID unknownClass{6, 0, 0, {}};

class Part final : public CUnknown {
public:
    explicit Part(IUnknown* outer) : CUnknown("part", outer) { ++created; }
    /// As objects do that lend themselves out while they are destroyed.
    ~Part() override {
        NonDelegatingAddRef();
        NonDelegatingRelease();
        ++destroyed;
    }

    static inline int created = 0;
    static inline int destroyed = 0;
};

CUnknown* working(IUnknown* outer, HRESULT* result) {
    EXPECT_EQ(*result, S_OK);
    return new Part(outer);  // NOLINT(cppcoreguidelines-owning-memory)
}
CUnknown* spoilt(IUnknown* outer, HRESULT* result) {
    *result = E_ACCESSDENIED;
    return new Part(outer);  // NOLINT(cppcoreguidelines-owning-memory)
}
constexpr auto nothing = [](IUnknown*, HRESULT*) -> CUnknown* { return nullptr; };
constexpr auto refused = [](IUnknown*, HRESULT* r) -> CUnknown* { return *r = E_ACCESSDENIED, nullptr; };
constexpr auto throwing = [](IUnknown*, HRESULT*) -> CUnknown* { throw std::runtime_error("creation"); };

int called = 0;
void routine(bool loading, const CLSID* classId) {
    EXPECT_EQ(*classId, workingClass);
    called = loading ? 1 : -1;
}

const std::array<FactoryTemplate, 6> rows{{
    {"Working"_w, &workingClass, working, routine, nullptr},
    {"Hidden"_w, &workingClass, nothing, nullptr, nullptr},
    {"Nothing"_w, &nothingClass, nothing, nullptr, nullptr},
    {"Refused"_w, &refusedClass, refused, nullptr, nullptr},
    {"Spoilt"_w, &spoiltClass, spoilt, nullptr, nullptr},
    {"Throwing"_w, &throwingClass, throwing, nullptr, nullptr},
}};

/// Puts the table of these classes in the place of the module's.
class ClassFactory : public testing::Test {
protected:
    ClassFactory() { SetFactoryTemplates(rows.data(), static_cast<int>(rows.size())); }
    ~ClassFactory() override {
        SetFactoryTemplates(module_.data(), static_cast<int>(module_.size()));
        EXPECT_EQ(Part::created, Part::destroyed);
        EXPECT_EQ(ModuleServer::canUnloadNow(), S_OK);
    }

    static CComPtr<IClassFactory> factoryOf(REFCLSID classId) {
        CComPtr<IClassFactory> factory;
        void* object = nullptr;
        EXPECT_EQ(ModuleServer::getClassObject(classId, IID_IClassFactory, &object), S_OK);
        factory.Attach(static_cast<IClassFactory*>(object));
        return factory;
    }

    static HRESULT request(REFCLSID classId, REFIID riid) {
        void* object = nullptr;
        const HRESULT result = ModuleServer::getClassObject(classId, riid, &object);
        EXPECT_EQ(object, nullptr);
        return result;
    }

    /// What creation fails with; nothing is handed out.
    static HRESULT failureOf(REFCLSID classId, IUnknown* outer, REFIID riid) {
        void* object = &called;
        const HRESULT result = factoryOf(classId)->CreateInstance(outer, riid, &object);
        EXPECT_EQ(object, nullptr);
        return result;
    }

private:
    std::span<const FactoryTemplate> module_ = factoryTemplates();
};

constexpr IID foreignInterface{7, 0, 0, {}};

TEST_F(ClassFactory, IsHandedOutForTheTablesClassesOnly) {
    EXPECT_EQ(request(workingClass, foreignInterface), E_NOINTERFACE);
    EXPECT_EQ(request(unknownClass, foreignInterface), E_NOINTERFACE);
    EXPECT_EQ(request(unknownClass, IID_IUnknown), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(request(unknownClass, IID_IClassFactory), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(ModuleServer::getClassObject(workingClass, IID_IClassFactory, nullptr), E_POINTER);

    void* object = nullptr;
    ASSERT_EQ(ModuleServer::getClassObject(workingClass, IID_IUnknown, &object), S_OK);
    EXPECT_EQ(static_cast<IUnknown*>(object)->Release(), 0U);
}

TEST_F(ClassFactory, KnowsItsTwoInterfacesAndCountsItsReferences) {
    const auto factory = factoryOf(workingClass);
    EXPECT_EQ(factory->AddRef(), 2U);
    EXPECT_EQ(factory->Release(), 1U);
    for (const IID& riid : {IID_IUnknown, IID_IClassFactory}) {
        void* object = nullptr;
        ASSERT_EQ(factory->QueryInterface(riid, &object), S_OK);
        EXPECT_EQ(object, factory.p);
        EXPECT_EQ(factory->Release(), 1U);
    }
    void* object = &called;
    EXPECT_EQ(factory->QueryInterface(foreignInterface, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ClassFactory, CreationFailsWithoutLeavingAnObject) {
    EXPECT_EQ(factoryOf(workingClass)->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(failureOf(workingClass, nullptr, foreignInterface), E_NOINTERFACE);
    EXPECT_EQ(failureOf(nothingClass, nullptr, IID_IUnknown), E_OUTOFMEMORY);
    EXPECT_EQ(failureOf(refusedClass, nullptr, IID_IUnknown), E_ACCESSDENIED);
    const int before = Part::created;
    EXPECT_EQ(failureOf(spoiltClass, nullptr, IID_IUnknown), E_ACCESSDENIED);
    EXPECT_EQ(Part::created, before + 1);
    EXPECT_TRUE(FAILED(failureOf(throwingClass, nullptr, IID_IUnknown)));
}

TEST_F(ClassFactory, AggregatesUnderIUnknownAlone) {
    const auto outer = factoryOf(workingClass);
    const int before = Part::created;
    EXPECT_EQ(failureOf(workingClass, outer, IID_IClassFactory), E_NOINTERFACE);
    EXPECT_EQ(Part::created, before) << "created before it was refused";

    void* object = nullptr;
    ASSERT_EQ(factoryOf(workingClass)->CreateInstance(outer, IID_IUnknown, &object), S_OK);
    auto* const inner = static_cast<IUnknown*>(object);
    EXPECT_NE(inner, static_cast<IUnknown*>(outer.p));
    EXPECT_EQ(outer->AddRef(), 2U) << "an inner object holds no reference to its outer one";
    outer->Release();
    EXPECT_EQ(inner->Release(), 0U);
}

TEST_F(ClassFactory, LocksKeepTheModule) {
    const auto factory = factoryOf(workingClass);
    EXPECT_EQ(ModuleServer::canUnloadNow(), S_OK) << "a factory alone doesn't";
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(2), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(ModuleServer::canUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(ModuleServer::canUnloadNow(), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(ModuleServer::canUnloadNow(), S_OK) << "a lock too few";
    factory->LockServer(TRUE);
}

TEST_F(ClassFactory, AttachAndDetachCallTheRoutines) {
    DWORD identifier = 1;
    platform::systemPlatform(identifier);
    ModuleServer::attach(&called);
    EXPECT_EQ(called, 1);
    EXPECT_EQ(ModuleServer::instance(), &called);
    EXPECT_EQ(ModuleServer::systemPlatform(), identifier);
    ModuleServer::detach();
    EXPECT_EQ(called, -1);
}

}  // namespace
}  // namespace mvrtpfec
