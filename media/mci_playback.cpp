// A MIDI sequence (alias "MUSIC") or a media file (alias "FILE") played
// through MCI command strings. The library keeps no state: the devices are
// the process's, found again by their aliases.
#include <windows.h>
#include <mmsystem.h>
#include <stdio.h>

#include "tarn/media.h"

namespace {

// The open command, terminator included, fits this many bytes.
constexpr size_t kCommandBuffer = 520;

constexpr char kCloseAll[] = "close all";

// Sends one command without a return-text buffer; true when MCI accepts it.
bool Send(const char* command, HWND callback) {
  return ::mciSendStringA(command, nullptr, 0, callback) == 0;
}

// Closes every MCI device of the process, opens `path` with `openFormat`
// (its "%s" replaced by the path, unquoted) and starts `play` with the
// caller's window for the notification. The path must leave the command
// within kCommandBuffer bytes.
int Play(HWND window, const char* path, const char* openFormat, const char* play) {
  if (!path || !*path) return 0;
  char open[kCommandBuffer];
  const int length = snprintf(open, sizeof open, openFormat, path);
  if (length < 0 || static_cast<size_t>(length) >= sizeof open) return 0;
  return Send(kCloseAll, window) && Send(open, nullptr) && Send(play, window) ? 1 : 0;
}

}  // namespace

int TarnPlayMidi(HWND hWnd, const char* pszPath) {
  return Play(hWnd, pszPath, "open %s type sequencer alias MUSIC", "play MUSIC from 0 notify");
}
int TarnPauseMidi(HWND hWnd) { return Send("stop MUSIC", hWnd) ? 1 : 0; }
int TarnResumeMidi(HWND hWnd) { return Send("play MUSIC notify", hWnd) ? 1 : 0; }
int TarnStopMidi(HWND hWnd) { return Send(kCloseAll, hWnd) ? 1 : 0; }
int TarnReplayMidi(HWND hWnd) { return Send("play MUSIC from 0 notify", hWnd) ? 1 : 0; }

int TarnPlayFile(HWND hWnd, const char* pszPath) {
  return Play(hWnd, pszPath, "open %s alias FILE", "play FILE from 0 notify");
}
int TarnPauseFile(HWND hWnd) { return Send("stop FILE", hWnd) ? 1 : 0; }
int TarnResumeFile(HWND hWnd) { return Send("play FILE notify", hWnd) ? 1 : 0; }
int TarnStopFile(HWND hWnd) { return Send(kCloseAll, hWnd) ? 1 : 0; }
int TarnReplayFile(HWND hWnd) { return Send("play FILE from 0 notify", hWnd) ? 1 : 0; }
