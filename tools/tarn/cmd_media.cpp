// tarn play [--json] FILE: plays a media file, or a MIDI sequence (.mid,
// .midi, .rmi), through MCI, waits for the end of playback and prints how it
// ended. Keys typed at the console: p pauses and resumes, r replays from the
// start, q stops. Standard input that is not a console (a pipe, a file) is
// not read: playback then runs to its end.
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
  const unsigned char key = record.Event.KeyEvent.uChar.AsciiChar;
  return static_cast<char>(tolower(key));
}

struct Arguments {
  std::string path;
  bool json = false;
};

// Prints how playback ended ("end" or "stop"); returns 0.
int Ended(const Arguments& args, const char* how) {
  if (args.json)
    PrintRecords(Json::array({{{"file", args.path}, {"ended", how}}}), true, Layout::kLines);
  else
    printf("%s\n", strcmp(how, "end") ? "stopped" : "played to the end");
  return 0;
}

// Waits for the end of playback (MM_MCINOTIFY at `window`) and for keys at
// the console. The notifications of plays that a pause or a replay cut short
// (aborted, superseded) are not the end.
int Wait(const Arguments& args, const Family& family, HWND window) {
  HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  const DWORD handles = ::GetConsoleMode(input, &mode) ? 1 : 0;
  bool paused = false;
  for (;;) {
    if (::MsgWaitForMultipleObjects(handles, &input, FALSE, INFINITE, QS_ALLINPUT) ==
        WAIT_OBJECT_0 && handles) {
      const char key = ReadKey(input);
      if (key == 'q') return family.stop(window), Ended(args, "stop");
      if (key == 'p') paused = !paused, (paused ? family.pause : family.resume)(window);
      if (key == 'r') paused = false, family.replay(window);
      if ((key == 'p' || key == 'r') && !args.json)
        printf("%s\n", paused ? "paused" : "playing"), fflush(stdout);
      continue;
    }
    MSG msg;
    while (::PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
      if (msg.message != MM_MCINOTIFY || msg.hwnd != window) {
        ::DispatchMessageA(&msg);
        continue;
      }
      if (msg.wParam == MCI_NOTIFY_FAILURE)
        return family.stop(window), Fail(args.path, "the device failed during playback");
      if (msg.wParam == MCI_NOTIFY_SUCCESSFUL) return family.stop(window), Ended(args, "end");
    }
  }
}

int Play(const Arguments& args) {
  const std::string& path = args.path;
  if (::GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES)
    return Fail(path, SystemText(::GetLastError()));
  // A message-only window: it receives the notification and is never shown.
  const HWND window = ::CreateWindowA("STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      nullptr, nullptr);
  if (!window) return Fail(path, SystemText(::GetLastError()));
  const Family& family = IsSequence(path) ? kSequence : kMediaFile;
  // The path reaches MCI unquoted: a blank splits it into words.
  const char* refused = path.find(' ') == std::string::npos ? "MCI cannot open or play it"
                                                            : "MCI takes no blank in a path";
  const int result = family.play(window, path.c_str()) ? Wait(args, family, window)
                                                       : Fail(path, refused);
  ::DestroyWindow(window);
  return result;
}

}  // namespace

Runner DeclarePlay(CLI::App& command) {
  auto args = std::make_shared<Arguments>();
  command.add_option("file", args->path, "the file; .mid, .midi and .rmi play as MIDI sequences")
      ->required();
  AddJsonFlag(command, args->json);
  command.footer("Waits for the end of playback and prints how it ended (\"played to the end\", "
                 "\"stopped\"). At a console: p pauses and resumes, r replays from the start, q "
                 "stops.");
  return [args] { return Play(*args); };
}

}  // namespace tarn_tool
