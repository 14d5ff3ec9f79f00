#include "platform/module/module_entry.h"
#include "platform/module/module_runtime-win32.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_ATTACH) platform::moduleLoaded(instance);
    if (reason == DLL_PROCESS_DETACH) {
        platform::moduleUnloading();
        if (processEnds == nullptr) platform::releaseModuleRuntime();
    }
    return TRUE;
}
