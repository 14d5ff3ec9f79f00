#pragma once

#include <span>

#include "framework/registration/factory_template.h"
#include "platform/module/registration_system.h"

namespace mvrtpfec {

/// Whether the rows' filters are to stand in the system's list of filters.
enum class Listing { remove, replace };

/// Takes the rows' filters out of the system's list and, to replace them, enters them anew, through the
/// newer mapper or, where there is none, the older one. A filter that isn't listed is no failure.
HRESULT listFilters(platform::RegistrationSystem& system, std::span<const FactoryTemplate> rows,
                    Listing listing);

}  // namespace mvrtpfec
