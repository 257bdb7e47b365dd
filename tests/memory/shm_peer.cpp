// The second process of the shared-memory test: memory_shm_peer NAME.
// Opens the block NAME, checks the test's pattern in its first 4096 bytes,
// inverts them, signals the event NAME.ready, holds the block until the event
// NAME.go is signalled, then closes it. The exit code tells how far it got.
#include <windows.h>

#include <string>

#include "tarn/memory.h"

namespace {
enum Exit { kDone = 0, kUsage = 1, kOpen = 2, kPattern = 3, kEvents = 4, kGo = 5 };
}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return kUsage;
  const std::string name = argv[1];
  CTarnSharedMemory block;
  DWORD code = 0;
  unsigned char* bytes = block.Open(name.c_str(), &code, nullptr, 0);
  if (!bytes || block.Size() != 0) return kOpen;
  for (int i = 0; i < 4096; ++i)
    if (bytes[i] != static_cast<unsigned char>(i * 13 + 5)) return kPattern;
  for (int i = 0; i < 4096; ++i) bytes[i] = static_cast<unsigned char>(~bytes[i]);

  HANDLE ready = ::OpenEventA(EVENT_MODIFY_STATE, FALSE, (name + ".ready").c_str());
  HANDLE go = ::OpenEventA(SYNCHRONIZE, FALSE, (name + ".go").c_str());
  if (!ready || !go) return kEvents;
  ::SetEvent(ready);
  const DWORD waited = ::WaitForSingleObject(go, 60000);
  block.Close();
  ::CloseHandle(ready);
  ::CloseHandle(go);
  return waited == WAIT_OBJECT_0 ? kDone : kGo;
}
