#include "platform/module_entry.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH)
        platform::moduleLoaded(instance);
    else if (reason == DLL_PROCESS_DETACH)
        platform::moduleUnloading();
    return TRUE;
}
