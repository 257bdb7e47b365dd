// Small helpers around an application's user interface: a free control
// identifier in a dialog, a top-level window of a process, the state of a key.
#include "tarn/process.h"

namespace {

// The largest positive 16-bit value: the top of the identifier range.
constexpr UINT kHighestItemId = 0x7FFF;

// What EnumWindows carries to WindowOfProcess: the process looked for and the
// first of its windows found (null until then).
struct WindowSearch {
  DWORD processId;
  HWND window;
};

BOOL CALLBACK WindowOfProcess(HWND window, LPARAM parameter) {
  auto* search = reinterpret_cast<WindowSearch*>(parameter);
  DWORD processId = 0;
  ::GetWindowThreadProcessId(window, &processId);
  if (!search || processId != search->processId) return TRUE;
  search->window = window;
  return FALSE;
}

}  // namespace

UINT TarnGetNextFreeDlgItemID(HWND hDlg) {
  if (!hDlg) return 0;
  UINT id = kHighestItemId;
  while (id != 1 && ::GetDlgItem(hDlg, static_cast<int>(id))) --id;
  return id;
}

HWND TarnGetHwndForProcId(DWORD dwProcessId) {
  WindowSearch search = {dwProcessId, nullptr};
  ::EnumWindows(WindowOfProcess, reinterpret_cast<LPARAM>(&search));
  return search.window;
}

int TarnIsKeyDown(int nVirtKey) {
  // The high bit means down; the low bit (toggled) does not count.
  return ::GetKeyState(nVirtKey) < 0 ? 1 : 0;
}
