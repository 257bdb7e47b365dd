// The library's entry point. It stores its own instance as the resource
// handle on every notification, thread attach and detach included; that is
// what undoes a TarnSetResourceHandle redirection when a thread starts or
// ends. It never refuses to load and releases nothing on unload.
#include <windows.h>

#include "tarn/core.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  (void)reason;
  (void)reserved;
  TarnSetResourceHandle(instance);
  return TRUE;
}
