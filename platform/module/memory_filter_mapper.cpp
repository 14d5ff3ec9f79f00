#include "platform/module/memory_filter_mapper.h"

#include <new>
#include <utility>

#include "platform/component/counted.h"
#include "platform/no_throw.h"

namespace platform {

/// What both generations do to the list; they differ in the steps that they do it in.
class MemoryFilterMapper {
protected:
    using Filter = MemoryRegistration::Filter;
    using Pin = MemoryRegistration::Pin;

    explicit MemoryFilterMapper(MemoryRegistration& list) : list_(list) {}
    ~MemoryFilterMapper() = default;

    HRESULT add(REFCLSID classId, LPCWSTR name, DWORD merit) {
        const HRESULT result = list_.mapperResult("RegisterFilter");
        if (FAILED(result)) return result;
        list_.filters_.push_back({classId, name, merit, {}});
        return result;
    }

    HRESULT remove(REFCLSID classId) {
        const HRESULT result = list_.mapperResult("UnregisterFilter");
        return FAILED(result) ? result : list_.remove(classId);
    }

    HRESULT addPin(REFCLSID filter, Pin pin) {
        const HRESULT result = list_.mapperResult("RegisterPin");
        Filter* const found = list_.find(filter);
        if (FAILED(result) || found == nullptr) return FAILED(result) ? result : E_FAIL;
        found->pins.push_back(std::move(pin));
        return result;
    }

    HRESULT addType(REFCLSID filter, LPCWSTR pinName, REFCLSID majorType, REFCLSID subtype) {
        const HRESULT result = list_.mapperResult("RegisterPinType");
        Filter* const found = list_.find(filter);
        if (FAILED(result) || found == nullptr) return FAILED(result) ? result : E_FAIL;
        for (Pin& pin : found->pins)
            if (pin.name == pinName) pin.types.emplace_back(majorType, subtype);
        return result;
    }

    void fill(REFCLSID filter, std::span<const REGFILTERPINS> pins) {
        for (const REGFILTERPINS& pin : pins) {
            Pin filled{pin.strName,    pin.bRendered != 0,       pin.bOutput != 0,     pin.bZero != 0,
                       pin.bMany != 0, *pin.clsConnectsToFilter, pin.strConnectsToPin, {}};
            for (const REGPINTYPES& type : std::span(pin.lpMediaType, pin.nMediaTypes))
                filled.types.emplace_back(*type.clsMajorType, *type.clsMinorType);
            list_.find(filter)->pins.push_back(std::move(filled));
        }
    }

private:
    MemoryRegistration& list_;
};

namespace {

/// An object with one interface beside IUnknown.
template <class Interface>
class OneInterface : public Counted<Interface> {
public:
    explicit OneInterface(REFIID riid) : riid_(riid) {}

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = riid == IID_IUnknown || riid == riid_ ? static_cast<Interface*>(this) : nullptr;
        if (*object == nullptr) return E_NOINTERFACE;
        this->AddRef();
        return S_OK;
    }

private:
    const IID riid_;
};

class Mapper2 final : public OneInterface<IFilterMapper2>, private MemoryFilterMapper {
public:
    explicit Mapper2(MemoryRegistration& list) : OneInterface(IID_IFilterMapper2), MemoryFilterMapper(list) {}

    STDMETHODIMP CreateCategory(REFCLSID, DWORD, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterFilter(const CLSID* category, LPCOLESTR instance, REFCLSID filter) override {
        return category != nullptr || instance != nullptr ? E_NOTIMPL : remove(filter);
    }
    STDMETHODIMP RegisterFilter(REFCLSID filter, LPCWSTR name, IMoniker** moniker, const CLSID* category,
                                LPCOLESTR instance, const REGFILTER2* record) override {
        if (moniker != nullptr || category != nullptr || instance != nullptr) return E_NOTIMPL;
        if (record == nullptr || record->dwVersion != 1) return E_INVALIDARG;
        return withoutThrowing([&] {
            const HRESULT result = add(filter, name, record->dwMerit);
            if (SUCCEEDED(result)) fill(filter, {record->rgPins, record->cPins});
            return result;
        });
    }
    STDMETHODIMP EnumMatchingFilters(IEnumMoniker**, DWORD, BOOL, DWORD, BOOL, DWORD, const GUID*,
                                     const REGPINMEDIUM*, const CLSID*, BOOL, BOOL, DWORD, const GUID*,
                                     const REGPINMEDIUM*, const CLSID*) override {
        return E_NOTIMPL;
    }
};

class Mapper1 final : public OneInterface<IFilterMapper>, private MemoryFilterMapper {
public:
    explicit Mapper1(MemoryRegistration& list) : OneInterface(IID_IFilterMapper), MemoryFilterMapper(list) {}

    STDMETHODIMP RegisterFilter(CLSID classId, LPCWSTR name, DWORD merit) override {
        return withoutThrowing([&] { return add(classId, name, merit); });
    }
    STDMETHODIMP RegisterFilterInstance(CLSID, LPCWSTR, CLSID*) override { return E_NOTIMPL; }
    STDMETHODIMP RegisterPin(CLSID filter, LPCWSTR name, BOOL rendered, BOOL output, BOOL zero, BOOL many,
                             CLSID connectsToFilter, LPCWSTR connectsToPin) override {
        return withoutThrowing([&] {
            return addPin(filter, {name,
                                   rendered != 0,
                                   output != 0,
                                   zero != 0,
                                   many != 0,
                                   connectsToFilter,
                                   connectsToPin,
                                   {}});
        });
    }
    STDMETHODIMP RegisterPinType(CLSID filter, LPCWSTR pin, CLSID majorType, CLSID subtype) override {
        return withoutThrowing([&] { return addType(filter, pin, majorType, subtype); });
    }
    STDMETHODIMP UnregisterFilter(CLSID filter) override { return remove(filter); }
    STDMETHODIMP UnregisterFilterInstance(CLSID) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterPin(CLSID, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP EnumMatchingFilters(IEnumRegFilters**, DWORD, BOOL, CLSID, CLSID, BOOL, BOOL, CLSID,
                                     CLSID) override {
        return E_NOTIMPL;
    }
};

template <class Interface, class Mapper>
HRESULT create(MemoryRegistration& list, REFIID riid, void** object) {
    CComPtr<Interface> created;
    created.Attach(new (std::nothrow) Mapper(list));  // NOLINT(cppcoreguidelines-owning-memory)
    return created == nullptr ? E_OUTOFMEMORY : created->QueryInterface(riid, object);
}

}  // namespace

HRESULT createMemoryFilterMapper(MemoryRegistration& list, REFCLSID classId, REFIID riid, void** object) {
    if (classId == CLSID_FilterMapper2) return create<IFilterMapper2, Mapper2>(list, riid, object);
    if (classId == CLSID_FilterMapper) return create<IFilterMapper, Mapper1>(list, riid, object);
    return REGDB_E_CLASSNOTREG;
}

}  // namespace platform
