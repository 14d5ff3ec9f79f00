#include "platform/module/memory_registration.h"

namespace platform {

RegistrationSystem& registrationSystem() noexcept {
    static MemoryRegistration system;
    return system;
}

}  // namespace platform
