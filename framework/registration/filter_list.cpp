#include "framework/registration/filter_list.h"

#include "framework/base/com_ptr.h"

namespace mvrtpfec {

using platform::RegistrationSystem;

namespace {

constexpr DWORD fileNotFound = 2;

HRESULT unlessMissing(HRESULT result) {
    return result == HRESULT_FROM_WIN32(fileNotFound) ? S_OK : result;
}

/// The component model for the calling thread, while one lives. A thread that has another kind of apartment
/// keeps that.
class Components {
public:
    explicit Components(RegistrationSystem& system)
        : system_(system), entered_(SUCCEEDED(system.initialize())) {}
    ~Components() {
        system_.freeUnusedLibraries();
        if (entered_) system_.uninitialize();
    }

    Components(const Components&) = delete;
    Components& operator=(const Components&) = delete;

private:
    RegistrationSystem& system_;
    bool entered_;
};

template <class Mapper>
HRESULT create(RegistrationSystem& system, REFCLSID classId, REFIID riid, CComPtr<Mapper>& mapper) {
    void* created = nullptr;
    const HRESULT result = system.createInstance(classId, riid, &created);
    if (SUCCEEDED(result)) mapper.Attach(static_cast<Mapper*>(created));
    return result;
}

HRESULT remove(IFilterMapper2& mapper, const FilterSetup& setup) {
    return mapper.UnregisterFilter(nullptr, nullptr, *setup.classId);
}

HRESULT enter(IFilterMapper2& mapper, const FilterSetup& setup) {
    REGFILTER2 record{};
    record.dwVersion = 1;
    record.dwMerit = setup.merit;
    record.cPins = static_cast<ULONG>(setup.pins.size());
    record.rgPins = setup.pins.data();
    return mapper.RegisterFilter(*setup.classId, setup.name, nullptr, nullptr, nullptr, &record);
}

HRESULT remove(IFilterMapper& mapper, const FilterSetup& setup) {
    return mapper.UnregisterFilter(*setup.classId);
}

HRESULT enterPin(IFilterMapper& mapper, const FilterSetup& setup, const REGFILTERPINS& pin) {
    HRESULT result = mapper.RegisterPin(*setup.classId, pin.strName, pin.bRendered, pin.bOutput, pin.bZero,
                                        pin.bMany, *pin.clsConnectsToFilter, pin.strConnectsToPin);
    for (UINT type = 0; type < pin.nMediaTypes && SUCCEEDED(result); ++type)
        result = mapper.RegisterPinType(*setup.classId, pin.strName, *pin.lpMediaType[type].clsMajorType,
                                        *pin.lpMediaType[type].clsMinorType);
    return result;
}

HRESULT enter(IFilterMapper& mapper, const FilterSetup& setup) {
    HRESULT result = mapper.RegisterFilter(*setup.classId, setup.name, setup.merit);
    for (const REGFILTERPINS& pin : setup.pins)
        if (SUCCEEDED(result)) result = enterPin(mapper, setup, pin);
    return result;
}

template <class Mapper>
HRESULT listWith(Mapper& mapper, std::span<const FactoryTemplate> rows, Listing listing) {
    HRESULT result = S_OK;
    for (const FactoryTemplate& row : rows) {
        if (row.setup == nullptr) continue;
        result = unlessMissing(remove(mapper, *row.setup));
        if (SUCCEEDED(result) && listing == Listing::replace)
            result = unlessMissing(enter(mapper, *row.setup));
        if (FAILED(result)) break;
    }
    return result;
}

}  // namespace

HRESULT listFilters(RegistrationSystem& system, std::span<const FactoryTemplate> rows, Listing listing) {
    const Components components(system);
    CComPtr<IFilterMapper2> mapper2;
    if (SUCCEEDED(create(system, CLSID_FilterMapper2, IID_IFilterMapper2, mapper2)))
        return listWith(*mapper2, rows, listing);
    CComPtr<IFilterMapper> mapper;
    const HRESULT result = create(system, CLSID_FilterMapper, IID_IFilterMapper, mapper);
    return FAILED(result) ? result : listWith(*mapper, rows, listing);
}

}  // namespace mvrtpfec
