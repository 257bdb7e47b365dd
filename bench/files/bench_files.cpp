// Per-call cost of the thin file operations against the bare platform calls
// they wrap (the wide calls on a path converted beforehand), through
// tarn.dll. Goal: at most 1.10 times the bare calls for paths up to 127
// bytes, with no heap allocation in the library on that path.
//
// The library's heap allocations are counted by pointing tarn.dll's imports
// of the runtime's allocation functions at counters.
//
//   bench_files [DIR]   DIR: where to make the files (default T:\, else TEMP)
#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "bench_clock.h"
#include "tarn/files.h"

namespace {

long g_allocations = 0;

using MallocFn = void*(__cdecl*)(size_t);
using CallocFn = void*(__cdecl*)(size_t, size_t);
using ReallocFn = void*(__cdecl*)(void*, size_t);
using StrdupFn = char*(__cdecl*)(const char*);
MallocFn g_malloc = nullptr;
CallocFn g_calloc = nullptr;
ReallocFn g_realloc = nullptr;
StrdupFn g_strdup = nullptr;

void* __cdecl CountedMalloc(size_t n) {
  ++g_allocations;
  return g_malloc(n);
}
void* __cdecl CountedCalloc(size_t n, size_t size) {
  ++g_allocations;
  return g_calloc(n, size);
}
void* __cdecl CountedRealloc(void* p, size_t n) {
  ++g_allocations;
  return g_realloc(p, n);
}
char* __cdecl CountedStrdup(const char* s) {
  ++g_allocations;
  return g_strdup(s);
}

// Points `module`'s import of the function `name` at `replacement`; returns
// what it pointed at, or null when the module imports no such function.
void* PatchImport(HMODULE module, const char* name, void* replacement) {
  BYTE* const base = reinterpret_cast<BYTE*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& imports =
      nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (!imports.VirtualAddress) return nullptr;
  for (auto* dll = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
       dll->Name; ++dll) {
    auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(
        base + (dll->OriginalFirstThunk ? dll->OriginalFirstThunk : dll->FirstThunk));
    auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + dll->FirstThunk);
    for (; names->u1.AddressOfData; ++names, ++slots) {
      if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
      const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
      if (strcmp(reinterpret_cast<const char*>(byName->Name), name) != 0) continue;
      DWORD protection = 0;
      ::VirtualProtect(&slots->u1.Function, sizeof(void*), PAGE_READWRITE, &protection);
      void* previous = reinterpret_cast<void*>(slots->u1.Function);
      slots->u1.Function = reinterpret_cast<ULONG_PTR>(replacement);
      ::VirtualProtect(&slots->u1.Function, sizeof(void*), protection, &protection);
      return previous;
    }
  }
  return nullptr;
}

template <typename F>
void Count(HMODULE module, const char* name, F counter, F* original, std::string* hooked) {
  if (void* previous = PatchImport(module, name, reinterpret_cast<void*>(counter))) {
    *original = reinterpret_cast<F>(previous);
    *hooked += std::string(hooked->empty() ? "" : ", ") + name;
  }
}


double PerCall(const std::function<void()>& call, int calls) {
  const double start = tarn_bench::Seconds();
  for (int i = 0; i < calls; ++i) call();
  return (tarn_bench::Seconds() - start) / calls;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Row {
  std::string name;
  std::function<void()> bare;
  std::function<void()> tarn;
};

void Measure(const Row& row) {
  // About 0.2 s per sample; bare and library calls alternate in rounds so
  // that drift in the machine's speed hits both alike.
  const double estimate = std::max(PerCall(row.bare, 50), PerCall(row.tarn, 50));
  const int calls = std::max(100, static_cast<int>(0.2 / estimate));
  constexpr int kRounds = 9;
  std::vector<double> bare;
  std::vector<double> tarn;
  long allocations = 0;
  for (int round = 0; round < kRounds; ++round) {
    const long before = g_allocations;
    if (round % 2) {
      tarn.push_back(PerCall(row.tarn, calls));
      bare.push_back(PerCall(row.bare, calls));
    } else {
      bare.push_back(PerCall(row.bare, calls));
      tarn.push_back(PerCall(row.tarn, calls));
    }
    allocations += g_allocations - before;
  }
  const double b = Median(bare) * 1e6;
  const double t = Median(tarn) * 1e6;
  printf("%-44s %9.2f %9.2f %7.3f %9.2f\n", row.name.c_str(), b, t, t / b,
         static_cast<double>(allocations) / (static_cast<double>(calls) * kRounds));
}

std::wstring Wide(const std::string& text) {
  std::wstring wide(text.size() + 1, L'\0');
  ::MultiByteToWideChar(CP_THREAD_ACP, 0, text.c_str(), -1, &wide[0],
                        static_cast<int>(wide.size()));
  wide.resize(wcslen(wide.c_str()));
  return wide;
}

// `prefix` + name padded with 'x' to exactly `length` bytes.
std::string PathOfLength(const std::string& prefix, size_t length) {
  return prefix + std::string(length - prefix.size(), 'x');
}

}  // namespace

int main(int argc, char** argv) {
  std::string root = argc > 1 ? argv[1] : "T:\\";
  if (::GetFileAttributesA(root.c_str()) == INVALID_FILE_ATTRIBUTES) {
    char temp[MAX_PATH];
    ::GetTempPathA(MAX_PATH, temp);
    root = temp;
  }
  if (root.back() != '\\') root += '\\';
  const std::string dir = root + "tarn-bench-files";
  ::CreateDirectoryA(dir.c_str(), nullptr);

  const std::string file = PathOfLength(dir + "\\f", 127);
  const std::string longFile = PathOfLength(dir + "\\f", 200);
  const std::string subdir = PathOfLength(dir + "\\d", 127);
  const std::string missing = PathOfLength(dir + "\\m", 127);
  for (const std::string& path : {file, longFile}) {
    HANDLE h = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ::CloseHandle(h);
  }
  ::CreateDirectoryA(subdir.c_str(), nullptr);
  const std::wstring wideFile = Wide(file);
  const std::wstring wideLongFile = Wide(longFile);
  const std::wstring wideSubdir = Wide(subdir);
  const std::wstring wideMissing = Wide(missing);

  const HMODULE tarn = ::GetModuleHandleA("tarn.dll");
  std::string hooked;
  Count(tarn, "malloc", &CountedMalloc, &g_malloc, &hooked);
  Count(tarn, "calloc", &CountedCalloc, &g_calloc, &hooked);
  Count(tarn, "realloc", &CountedRealloc, &g_realloc, &hooked);
  Count(tarn, "_strdup", &CountedStrdup, &g_strdup, &hooked);

  DWORD code = 0;
  char text[256] = "";
  const auto openClose = [](const wchar_t* path) {
    ::CloseHandle(::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0,
                                nullptr));
  };
  const auto findClose = [](const wchar_t* path) {
    WIN32_FIND_DATAW data;
    const HANDLE find = ::FindFirstFileW(path, &data);
    if (find != INVALID_HANDLE_VALUE) ::FindClose(find);
  };
  const std::vector<Row> rows = {
      {"TarnFileOpen + CloseHandle", [&] { openClose(wideFile.c_str()); },
       [&] {
         ::CloseHandle(TarnFileOpen(file.c_str(), GENERIC_READ, OPEN_EXISTING, 0,
                                    FILE_SHARE_READ, &code, text, sizeof(text)));
       }},
      {"TarnFileFind", [&] { findClose(wideFile.c_str()); },
       [&] { TarnFileFind(file.c_str(), &code, text, sizeof(text)); }},
      {"TarnDirectoryExist", [&] { findClose(wideSubdir.c_str()); },
       [&] { TarnDirectoryExist(subdir.c_str(), &code, text, sizeof(text)); }},
      {"TarnFileFind, missing (+ its message text)", [&] { findClose(wideMissing.c_str()); },
       [&] { TarnFileFind(missing.c_str(), &code, text, sizeof(text)); }},
      {"TarnFileOpen + CloseHandle, 200-byte path", [&] { openClose(wideLongFile.c_str()); },
       [&] {
         ::CloseHandle(TarnFileOpen(longFile.c_str(), GENERIC_READ, OPEN_EXISTING, 0,
                                    FILE_SHARE_READ, &code, text, sizeof(text)));
       }},
  };

  printf("paths of 127 bytes under %s (the last row: 200 bytes)\n", dir.c_str());
  printf("allocations counted through tarn.dll's imports of: %s\n",
         hooked.empty() ? "(none found)" : hooked.c_str());
  printf("median of 9 rounds, microseconds per call\n\n");
  printf("%-44s %9s %9s %7s %9s\n", "operation", "bare", "tarn", "ratio", "allocs");
  for (const Row& row : rows) Measure(row);

  ::DeleteFileA(file.c_str());
  ::DeleteFileA(longFile.c_str());
  ::RemoveDirectoryA(subdir.c_str());
  ::RemoveDirectoryA(dir.c_str());
  return 0;
}
