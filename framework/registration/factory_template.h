#pragma once

#include <span>

#include "framework/base/unknown.h"
#include "platform/module/filter_mapper.h"

namespace mvrtpfec {

/// With what a filter is entered into the system's list of filters. Everything it points to lives as long as
/// the module.
struct FilterSetup {
    const CLSID* classId;
    LPCWSTR name;
    DWORD merit;
    std::span<const REGFILTERPINS> pins;
};

/// Makes an object without a reference yet, or null and why in `result`. An object with a failure in
/// `result` is destroyed by the caller.
using CreationFunction = CUnknown* (*)(IUnknown* outer, HRESULT* result);
/// Called when the module is loaded and before it is unloaded.
using InitialisationRoutine = void (*)(bool loading, const CLSID* classId);

/// A class that the module serves.
struct FactoryTemplate {
    LPCWSTR name;
    const CLSID* classId;
    CreationFunction create;
    InitialisationRoutine initialise;  ///< may be null
    const FilterSetup* setup;          ///< null for a class that is no filter
};

/// Hands the module's table over, which must live as long as the module. Called during static
/// initialisation, so that this code knows no class of the module's.
void SetFactoryTemplates(const FactoryTemplate* templates, int count) noexcept;

std::span<const FactoryTemplate> factoryTemplates() noexcept;

}  // namespace mvrtpfec
