// tarn play FILE: plays a media file, or a MIDI sequence (.mid, .midi, .rmi),
// through MCI, waits for the end of playback and prints how it ended. Keys
// typed at the console: p pauses and resumes, r replays from the start, q
// stops. Standard input that is not a console (a pipe, a file) is not read.
#include <windows.h>
#include <mmsystem.h>
#include <ctype.h>
#include <string.h>

#include "commands.h"
#include "tarn/media.h"

namespace tarn_tool {
namespace {

// The library's functions for one kind of device.
struct Family {
  int (*play)(HWND, const char*);
  int (*pause)(HWND);
  int (*resume)(HWND);
  int (*replay)(HWND);
  int (*stop)(HWND);
};
constexpr Family kSequence = {TarnPlayMidi, TarnPauseMidi, TarnResumeMidi, TarnReplayMidi,
                              TarnStopMidi};
constexpr Family kMediaFile = {TarnPlayFile, TarnPauseFile, TarnResumeFile, TarnReplayFile,
                               TarnStopFile};

bool IsSequence(const std::string& path) {
  const char* dot = strrchr(path.c_str(), '.');
  if (!dot || strpbrk(dot, "\\/")) return false;
  return !_stricmp(dot, ".mid") || !_stricmp(dot, ".midi") || !_stricmp(dot, ".rmi");
}

// The character of the next key pressed at the console, or 0 for any other
// input record.
char ReadKey(HANDLE console) {
  INPUT_RECORD record;
  DWORD read = 0;
  if (!::ReadConsoleInputA(console, &record, 1, &read) || read != 1 ||
      record.EventType != KEY_EVENT || !record.Event.KeyEvent.bKeyDown)
    return 0;
  return static_cast<char>(tolower(static_cast<unsigned char>(record.Event.KeyEvent.uChar.AsciiChar)));
}

// Waits for the end of playback (MM_MCINOTIFY at `window`) and for keys at
// the console. The notifications of plays that a pause or a replay cut short
// (aborted, superseded) are not the end.
int Wait(const std::string& path, const Family& family, HWND window) {
  HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  const DWORD handles = ::GetConsoleMode(input, &mode) ? 1 : 0;
  bool paused = false;
  for (;;) {
    if (::MsgWaitForMultipleObjects(handles, &input, FALSE, INFINITE, QS_ALLINPUT) ==
        WAIT_OBJECT_0 && handles) {
      const char key = ReadKey(input);
      if (key == 'q') return family.stop(window), printf("stopped\n"), 0;
      if (key == 'p') paused = !paused, (paused ? family.pause : family.resume)(window);
      if (key == 'r') paused = false, family.replay(window);
      if (key == 'p' || key == 'r') printf("%s\n", paused ? "paused" : "playing"), fflush(stdout);
      continue;
    }
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
      if (msg.message != MM_MCINOTIFY || msg.hwnd != window) {
        ::DispatchMessageA(&msg);
        continue;
      }
      if (msg.wParam == MCI_NOTIFY_FAILURE)
        return family.stop(window), Fail(path, "the device failed during playback");
      if (msg.wParam == MCI_NOTIFY_SUCCESSFUL)
        return family.stop(window), printf("played to the end\n"), 0;
    }
  }
}

int Play(const std::string& path) {
  if (::GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES)
    return Fail(path, SystemText(::GetLastError()));
  // A message-only window: it receives the notification and is never shown.
  const HWND window = ::CreateWindowA("STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      nullptr, nullptr);
  if (!window) return Fail(path, SystemText(::GetLastError()));
  const Family& family = IsSequence(path) ? kSequence : kMediaFile;
  const int result = family.play(window, path.c_str())
                         ? Wait(path, family, window)
                         : Fail(path, "MCI cannot play it (an unknown type, or a blank in the path)");
  ::DestroyWindow(window);
  return result;
}

}  // namespace

Runner DeclarePlay(CLI::App& command) {
  auto path = std::make_shared<std::string>();
  command.add_option("file", *path, "the media file; .mid, .midi and .rmi play as MIDI sequences")
      ->required();
  command.footer("Waits for the end of playback and prints how it ended. At a console: p pauses "
                 "and resumes, r replays from the start, q stops.");
  return [path] { return Play(*path); };
}

}  // namespace tarn_tool
