#include "core/resource_handle.h"

#include "tarn/core.h"

namespace {
// A plain shared word: stores and loads on different threads are not ordered.
HINSTANCE g_resourceHandle = nullptr;
}  // namespace

void TarnSetResourceHandle(HINSTANCE hInstance) { g_resourceHandle = hInstance; }

HINSTANCE TarnGetResourceHandle() { return g_resourceHandle; }
