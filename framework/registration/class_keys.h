#pragma once

#include <string>

#include "framework/registration/factory_template.h"
#include "platform/module/registration_system.h"

namespace mvrtpfec {

/// An identifier as the registry has it: "{3EDB9832-D645-4FB0-B987-A02069F40F20}".
std::string registryForm(REFGUID identifier);

/// Writes the keys by which the system finds the class: its name, the module's path, the threading model.
HRESULT writeClassKeys(platform::RegistrationSystem& system, const FactoryTemplate& row,
                       const std::basic_string<WCHAR>& modulePath);

/// Deletes them with all that is below. Errors are ignored.
void deleteClassKeys(platform::RegistrationSystem& system, const FactoryTemplate& row);

}  // namespace mvrtpfec
