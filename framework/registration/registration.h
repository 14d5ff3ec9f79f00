#pragma once

#include <span>

#include "framework/registration/factory_template.h"
#include "platform/module/registration_system.h"

namespace mvrtpfec {

/// Writes the class keys of every row, then enters every filter into the system's list, in place of what the
/// list had of it. Stops at the first failure and leaves what has been written. Throws std::bad_alloc.
HRESULT enterModule(platform::RegistrationSystem& system, platform::ModuleHandle module,
                    std::span<const FactoryTemplate> rows);

/// Takes every filter out of the system's list, then deletes the class keys. What isn't there is no
/// failure, nor is a key that can't be deleted.
HRESULT removeModule(platform::RegistrationSystem& system, platform::ModuleHandle module,
                     std::span<const FactoryTemplate> rows);

}  // namespace mvrtpfec
