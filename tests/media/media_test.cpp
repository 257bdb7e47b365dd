// Dialog item identifiers, top-level windows of this program and of itself
// started as a child, key states; WAV files and MIDI sequences played through
// Wine's MCI (which needs no sound card), the files made here.
#include <gtest/gtest.h>
#include <windows.h>
#include <mmsystem.h>

#include <math.h>

#include <functional>
#include <string>

#include "support/wine_env.h"
#include "tarn/media.h"
#include "tarn/process.h"

namespace {

using namespace tarn_test;

std::string ReadyEvent(DWORD process) { return "tarn-ready-" + std::to_string(process); }

// "media_test child W": makes a hidden top-level window when W is 1, then
// signals its ready event and sleeps until it is ended.
const int kChild = [] {
  if (__argc != 3 || strcmp(__argv[1], "child") != 0) return 0;
  if (atoi(__argv[2])) ::CreateWindowA("STATIC", "", WS_POPUP, 0, 0, 1, 1, 0, 0, 0, 0);
  ::SetEvent(::CreateEventA(nullptr, TRUE, FALSE, ReadyEvent(::GetCurrentProcessId()).c_str()));
  ::Sleep(INFINITE);
  return 0;
}();

// This program started again as a child (with a window or without), ended
// and released by the destructor.
struct Child {
  PROCESS_INFORMATION p = {};
  explicit Child(bool window) {
    STARTUPINFOA s = {sizeof s};
    std::string line = std::string("media_test child ") + (window ? "1" : "0");
    ::CreateProcessA(_pgmptr, &line[0], 0, 0, FALSE, CREATE_SUSPENDED, 0, 0, &s, &p);
    const HANDLE ready = ::CreateEventA(nullptr, TRUE, FALSE, ReadyEvent(p.dwProcessId).c_str());
    ::ResumeThread(p.hThread);
    EXPECT_EQ(::WaitForSingleObject(ready, 20000), WAIT_OBJECT_0) << "child " << window;
    ::CloseHandle(ready);
  }
  ~Child() {
    ::TerminateProcess(p.hProcess, 0);
    ::WaitForSingleObject(p.hProcess, 20000);
    ::CloseHandle(p.hThread), ::CloseHandle(p.hProcess);
  }
};

INT_PTR CALLBACK NoDialogProc(HWND, UINT, WPARAM, LPARAM) { return FALSE; }
HWND Dialog(int id) {
  return ::CreateDialogParamA(::GetModuleHandleA(nullptr), MAKEINTRESOURCEA(id), nullptr,
                              NoDialogProc, 0);
}

// The children start after the dialogs: a child's window, the newest, comes
// first in the z-order, before this program's.
TEST(Windows, ItemIdsTopLevelWindowsAndKeys) {
  const HWND full = Dialog(100), partial = Dialog(101);
  ASSERT_TRUE(full && partial);
  const struct { HWND dialog; UINT id; } items[] = {{full, 32766}, {partial, 32767}, {0, 0}};
  for (const auto& row : items) EXPECT_EQ(TarnGetNextFreeDlgItemID(row.dialog), row.id);

  const Child windowless(false), windowed(true);
  const struct { const char* what; DWORD process; bool found; } processes[] = {
      {"this program", ::GetCurrentProcessId(), true},
      {"a child with a hidden window", windowed.p.dwProcessId, true},
      {"a child without windows", windowless.p.dwProcessId, false},
      {"no process", 0xFFFFFFF1, false},
  };
  for (const auto& row : processes) {
    const HWND window = TarnGetHwndForProcId(row.process);
    DWORD owner = 0;
    ::GetWindowThreadProcessId(window, &owner);
    EXPECT_EQ(window != nullptr, row.found) << row.what;
    if (window) EXPECT_EQ(owner, row.process) << row.what;
    if (window) EXPECT_EQ(::GetAncestor(window, GA_PARENT), ::GetDesktopWindow()) << row.what;
  }

  BYTE saved[256], keys[256] = {};
  ::GetKeyboardState(saved);
  keys[VK_SHIFT] = 0x80, keys[VK_CAPITAL] = 0x01;  // down; toggled on, not down
  ::SetKeyboardState(keys);
  EXPECT_EQ(TarnIsKeyDown(VK_SHIFT), 1);
  EXPECT_EQ(TarnIsKeyDown(VK_CAPITAL), 0);
  ::SetKeyboardState(saved);
  ::DestroyWindow(full), ::DestroyWindow(partial);
}

// A 0.2 s tone, 8 kHz 8-bit mono PCM.
std::string Wave() {
  std::string samples;
  for (int i = 0; i < 1600; ++i) samples += static_cast<char>(128 + 60 * sin(i * 0.3));
  auto le = [](unsigned value, int bytes) {
    std::string out;
    for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i));
    return out;
  };
  return "RIFF" + le(36 + 1600, 4) + "WAVEfmt " + le(16, 4) + le(1, 2) + le(1, 2) + le(8000, 4) +
         le(8000, 4) + le(1, 2) + le(8, 2) + "data" + le(1600, 4) + samples;
}
// Three short notes: format 0, one track, 96 ticks a quarter.
std::string Midi() {
  const char track[] = "\x00\x90\x3c\x40\x30\x80\x3c\x40\x00\x90\x40\x40\x30\x80\x40\x40"
                       "\x00\x90\x43\x40\x30\x80\x43\x40\x00\xff\x2f\x00";
  return std::string("MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0", 21) +
         static_cast<char>(sizeof track - 1) + std::string(track, sizeof track - 1);
}

// 1 once an MM_MCINOTIFY has reached `window` (within 5 s), with every
// other one that has arrived by then taken off the queue.
int Notified(HWND window) {
  MSG msg;
  for (int wait = 0; wait < 250; ++wait, ::Sleep(20))
    if (::PeekMessageA(&msg, window, MM_MCINOTIFY, MM_MCINOTIFY, PM_REMOVE)) {
      while (::PeekMessageA(&msg, window, MM_MCINOTIFY, MM_MCINOTIFY, PM_REMOVE)) {}
      return 1;
    }
  return 0;
}

// One play, pause, resume, replay or stop after the other, with the result of
// each; MCI's devices are the process's, so the order matters.
TEST(Mci, PlaysPausesResumesReplaysAndStops) {
  ScratchDir dir;
  ::CreateDirectoryA((dir / "a b").c_str(), nullptr);
  for (const std::string& folder : {dir.path(), dir / "a b"}) {
    WriteFile(folder + "\\tone.wav", Wave());
    WriteFile(folder + "\\notes.mid", Midi());
  }
  const std::string wav = dir / "tone.wav", mid = dir / "notes.mid";
  const std::string blankWav = dir / "a b\\tone.wav", blankMid = dir / "a b\\notes.mid";
  const HWND w = ::CreateWindowA("STATIC", "", WS_POPUP, 0, 0, 1, 1, 0, 0, 0, 0);
  const struct { const char* what; std::function<int()> call; int result; } steps[] = {
      {"stop with nothing open", [&] { return TarnStopFile(w); }, 1},
      {"file: pause, nothing open", [&] { return TarnPauseFile(w); }, 0},
      {"file: resume, nothing open", [&] { return TarnResumeFile(w); }, 0},
      {"file: replay, nothing open", [&] { return TarnReplayFile(w); }, 0},
      {"midi: pause, nothing open", [&] { return TarnPauseMidi(w); }, 0},
      {"midi: resume, nothing open", [&] { return TarnResumeMidi(w); }, 0},
      {"midi: replay, nothing open", [&] { return TarnReplayMidi(w); }, 0},
      {"file: play", [&] { return TarnPlayFile(w, wav.c_str()); }, 1},
      {"file: the play ends at the window", [&] { return Notified(w); }, 1},
      {"file: pause", [&] { return TarnPauseFile(w); }, 1},
      {"file: resume", [&] { return TarnResumeFile(w); }, 1},
      {"file: the resumed play ends", [&] { return Notified(w); }, 1},
      {"file: replay", [&] { return TarnReplayFile(w); }, 1},
      {"file: the replay ends", [&] { return Notified(w); }, 1},
      {"midi: play", [&] { return TarnPlayMidi(w, mid.c_str()); }, 1},
      {"midi: the file was closed", [&] { return TarnPauseFile(w); }, 0},
      {"midi: pause", [&] { return TarnPauseMidi(w); }, 1},
      {"midi: the paused play ends", [&] { return Notified(w); }, 1},
      {"midi: resume", [&] { return TarnResumeMidi(w); }, 1},
      {"midi: replay", [&] { return TarnReplayMidi(w); }, 1},
      {"midi: the replay ends", [&] { return Notified(w); }, 1},
      {"file: play again", [&] { return TarnPlayFile(w, wav.c_str()); }, 1},
      {"file: the sequence was closed", [&] { return TarnPauseMidi(w); }, 0},
      {"midi: play again", [&] { return TarnPlayMidi(w, mid.c_str()); }, 1},
      {"file: stop", [&] { return TarnStopFile(w); }, 1},
      {"file: stop closed the sequence", [&] { return TarnPauseMidi(w); }, 0},
      {"file: play a third time", [&] { return TarnPlayFile(w, wav.c_str()); }, 1},
      {"midi: stop", [&] { return TarnStopMidi(w); }, 1},
      {"midi: stop closed the file", [&] { return TarnPauseFile(w); }, 0},
      {"midi: play before a failed play", [&] { return TarnPlayMidi(w, mid.c_str()); }, 1},
      {"file: missing", [&] { return TarnPlayFile(w, (dir / "none.wav").c_str()); }, 0},
      {"file: no sequence left open", [&] { return TarnPauseMidi(w); }, 0},
      {"file: no file left open", [&] { return TarnPauseFile(w); }, 0},
      {"midi: missing", [&] { return TarnPlayMidi(w, (dir / "none.mid").c_str()); }, 0},
      {"file: a path with a blank", [&] { return TarnPlayFile(w, blankWav.c_str()); }, 0},
      {"midi: a path with a blank", [&] { return TarnPlayMidi(w, blankMid.c_str()); }, 0},
      {"file: no path", [&] { return TarnPlayFile(w, nullptr); }, 0},
  };
  for (const auto& step : steps) EXPECT_EQ(step.call(), step.result) << step.what;
  TarnStopFile(w);
  ::DestroyWindow(w);
}

}  // namespace
