// Checks shared by every subsystem's tests. Each subsystem adds rows; the
// checks themselves live here once.
//
//  - CheckErrorRows: the error out-parameters of an operation (code, the
//    system's text for it, cleared on entry, size 0 untouched, size 1 the
//    terminator only, null pointers).
//  - CheckTextRows: an operation writing text into a caller buffer, at sizes
//    0, 1, n and n + 1, with the buffer's end against an inaccessible page and
//    a canary before its start.
//  - ExpectBalanced: no handle and no private memory left behind by a loop of
//    calls (Windows only).
#ifndef TARN_TESTS_SUPPORT_CHECKS_H
#define TARN_TESTS_SUPPORT_CHECKS_H

#ifdef _WIN32
#include <windows.h>
#else
typedef unsigned int DWORD;
#endif

#include <functional>
#include <string>
#include <vector>

namespace tarn_test {

#ifdef _WIN32
// The system's text for `code` (FormatMessageA, user default language), as the
// library must store it; empty for 0.
std::string SystemText(DWORD code);

// One operation that ends with the error out-parameters. `call` forwards the
// three out-parameters to it and returns its result as a number (a handle as
// 1 when valid, closed by `call`); it must behave the same on every call, so
// it sets up what it needs itself. `code` 0 means nothing is reported: code 0
// and an empty text. `message`: the number of the system message whose text
// goes with the code, when it is not the code itself (the low 16 bits of a
// result code; 0 for none).
struct ErrorRow {
  std::string what;
  std::function<long long(DWORD* code, char* text, DWORD size)> call;
  long long result;
  DWORD code;
  long long message = -1;
};

// Runs each row four times: with out-parameters full of junk (the code and
// the text must be the expected ones), with a text buffer of size 0 (never
// written), with one of size 1 (the terminator only) and with null pointers
// (same result, no crash).
void CheckErrorRows(const std::vector<ErrorRow>& rows);

// Runs `body` once to warm up, then `times` times, and expects the process to
// hold as many handles and (within 256 KiB) as much private memory as before.
void ExpectBalanced(const char* what, const std::function<void()>& body, int times = 100);
#endif

// How an operation treats a buffer too small for its text.
enum class Short {
  kCut,        // the first size - 1 bytes and a terminator
  kEmpty,      // a terminator only
  kUntouched,  // not written at all
};

// One operation that writes text into a caller buffer of `size` bytes (or
// characters) and returns a number. `text` is what it writes when the buffer
// is large enough; `limit` is the largest size the operation treats as too
// small (the text's length unless given). Results expected: `fits` with room
// to spare, `cut` at sizes 1 to limit, 0 at size 0 (nothing written). With
// `zeroFills` every byte after the text must be zero. `compare` limits the
// comparison to the text's first bytes (for generated names).
struct TextRow {
  std::string what;
  std::function<long long(char* buffer, DWORD size)> call;
  std::string text;
  Short rule;
  long long fits;
  long long cut;
  bool zeroFills = false;
  size_t limit = std::string::npos;
  size_t compare = std::string::npos;
};

// Calls each row at sizes 0, 1, limit and limit + 1, each buffer ending where
// an inaccessible page begins (a write past the end faults) and preceded by a
// canary (a write before the start is reported).
void CheckTextRows(const std::vector<TextRow>& rows);

}  // namespace tarn_test

#endif  // TARN_TESTS_SUPPORT_CHECKS_H
