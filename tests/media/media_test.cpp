// Dialog item identifiers, top-level windows of this program and of itself
// started as a child, key states; a WAV file and a MIDI sequence, made here,
// played through Wine's MCI, which needs no sound card.
#include <gtest/gtest.h>
#include <windows.h>
#include <mmsystem.h>

#include "support/wine_env.h"
#include "tarn/media.h"
#include "tarn/process.h"

namespace {

// "media_test child": a hidden top-level window, then sleep until ended.
const int kChild = __argc == 2 && !strcmp(__argv[1], "child") ? (::CreateWindowA(
    "STATIC", "", WS_POPUP, 0, 0, 1, 1, 0, 0, 0, 0), ::Sleep(INFINITE), 0) : 0;

// 1 when an MM_MCINOTIFY reaches `window` within 5 s.
int Notified(HWND window) {
  MSG msg;
  for (int wait = 0; wait < 250; ++wait, ::Sleep(20))
    if (::PeekMessageA(&msg, window, MM_MCINOTIFY, MM_MCINOTIFY, PM_REMOVE)) return 1;
  return 0;
}

// A step a word: F (media file) or M (sequence); the call: p play, m play of
// a missing file, b play of the same file under a name with a blank, s pause,
// r resume, a replay, x stop, n the window notified; the result. Under Wine
// without a sound card a WAV's play ends with MCI_NOTIFY_FAILURE at once, a
// sequence's only when it is replaced (_SUPERSEDED) or stopped (_ABORTED): no
// notification is still to come at an n.
const char kSteps[] =
    "Fx1 Fs0 Fr0 Fa0 Ms0 Mr0 Ma0 Mp1 Fs0 Ms1 Mn1 Mr1 Ma1 Mn1 Mx1 Mn1 Fp1 Fn1 Fs1 Fr1 Fa1 "
    "Mp1 Fs0 Fp1 Ms0 Mp1 Fx1 Ms0 Fp1 Mx1 Fs0 Mp1 Fm0 Ms0 Mm0 Fb0 Mb0 ";

// This program has no window before it makes its dialog (class "#32770")
// with controls 1, 2 and 32767. Its child's window, made last, comes first in
// the z-order, before the dialog. The dialog is then MCI's callback window.
TEST(WindowsAndMci, ItemIdsTopLevelWindowsKeysAndPlayback) {
  EXPECT_EQ(TarnGetHwndForProcId(::GetCurrentProcessId()), nullptr) << "no window yet";
  const HWND dlg = ::CreateWindowA("#32770", "", WS_POPUP, 0, 0, 9, 9, 0, 0, 0, 0);
  for (INT_PTR id : {1, 2, 32767})
    ::CreateWindowA("STATIC", "", WS_CHILD, 0, 0, 1, 1, dlg, HMENU(id), 0, 0);
  EXPECT_EQ(TarnGetNextFreeDlgItemID(dlg), 32766u);
  ::DestroyWindow(::GetDlgItem(dlg, 32767));
  EXPECT_EQ(TarnGetNextFreeDlgItemID(dlg), 32767u);
  EXPECT_EQ(TarnGetNextFreeDlgItemID(nullptr), 0u);

  HANDLE child = nullptr;
  TarnWinExecWait32(_pgmptr, "x child", 0, &child, 0, 0, 0, 0, 0);
  const DWORD ids[] = {::GetProcessId(child), ::GetCurrentProcessId(), 0xFFFFFFF1};
  auto owner = [](DWORD id, DWORD found = 0) {
    return ::GetWindowThreadProcessId(TarnGetHwndForProcId(id), &found), found;
  };
  for (int wait = 0; wait < 500 && !owner(ids[0]); ++wait) ::Sleep(20);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(owner(ids[i]), i < 2 ? ids[i] : 0) << "process " << i;
  ::TerminateProcess(child, 0), ::CloseHandle(child);

  BYTE keys[256] = {};
  keys[VK_SHIFT] = 0x80, keys[VK_CAPITAL] = 0x01;  // down; toggled on, not down
  ::SetKeyboardState(keys);
  EXPECT_EQ(TarnIsKeyDown(VK_SHIFT) * 10 + TarnIsKeyDown(VK_CAPITAL), 10) << "shift, caps lock";

  const tarn_test::ScratchDir dir;
  std::string wav("RIFF\x64\6\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1f\0\0\x40\x1f\0\0\1\0\x8\0data"
                  "\x40\6\0\0", 44);  // 0.2 s of a 500 Hz tone, 8 kHz, 8 bits, mono
  for (int i = 0; i < 1600; ++i) wav += i & 8 ? '\xc0' : '\x40';
  const std::string mid("MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\x14\0\x90\x3c\x40\x30\x80\x3c\x40\0"
                        "\x90\x40\x40\x30\x80\x40\x40\0\xff\x2f\0", 42);  // two notes
  for (const std::string& name : {dir / "x", dir / "x y"})
    tarn_test::WriteFile(name + ".wav", wav), tarn_test::WriteFile(name + ".mid", mid);
  int (*const calls[2][5])(HWND) = {
      {TarnPauseFile, TarnResumeFile, TarnReplayFile, TarnStopFile, Notified},
      {TarnPauseMidi, TarnResumeMidi, TarnReplayMidi, TarnStopMidi, Notified}};
  for (const char* s = kSteps; *s; s += 4) {  // a failure shows the steps from there on
    const std::string path = dir / (s[1] == 'm' ? "none" : s[1] == 'b' ? "x y" : "x") +
                             (*s == 'F' ? ".wav" : ".mid");
    const char* const call = strchr("sraxn", s[1]);
    EXPECT_EQ(call ? calls[*s == 'M'][call - "sraxn"](dlg)
                   : (*s == 'F' ? TarnPlayFile : TarnPlayMidi)(dlg, path.c_str()), s[2] - '0') << s;
  }
}

}  // namespace
