// The second process of the shared-memory test: memory_shm_peer NAME.
// Opens the block NAME and turns each of its first 4096 bytes that is 0x5A
// into 0xA5, any other into 0. Exits with 0 when it opened the block as an
// opener must find it (size 0), with 1 otherwise.
#include "tarn/memory.h"

int main(int argc, char** argv) {
  CTarnSharedMemory block;
  unsigned char* bytes = argc == 2 ? block.Open(argv[1], nullptr, nullptr, 0) : nullptr;
  for (int i = 0; bytes && i < 4096; ++i) bytes[i] = bytes[i] == 0x5A ? 0xA5 : 0;
  return bytes && block.Size() == 0 ? 0 : 1;
}
