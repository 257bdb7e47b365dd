// tarn run [--wait MS] [--show N] COMMAND LINE...: starts a program through
// TarnWinExecWait32 and prints its exit code, "timeout" or, without a wait,
// its process id.
#include <windows.h>

#include "commands.h"
#include "tarn/process.h"

namespace tarn_tool {
namespace {

struct Arguments {
  unsigned long wait = INFINITE;
  unsigned short show = SW_SHOWNORMAL;
  bool json = false;
};

// The command line from its words: a word with a blank or a quotation mark
// is quoted (its quotation marks doubled as backslash-escaped).
std::string CommandLine(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty()) line += ' ';
    if (!word.empty() && word.find_first_of(" \t\"") == std::string::npos) {
      line += word;
      continue;
    }
    line += '"';
    for (char c : word) line += c == '"' ? std::string("\\\"") : std::string(1, c);
    line += '"';
  }
  return line;
}

int Run(const Arguments& args, const std::vector<std::string>& words) {
  if (words.empty()) throw CLI::RequiredError("COMMAND");
  const std::string line = CommandLine(words);
  HANDLE process = nullptr;
  DWORD code = 0;
  char text[512] = "";
  const int result = TarnWinExecWait32(nullptr, line.c_str(), args.show, &process, 0, args.wait,
                                       &code, text, sizeof text);
  if (result == -1 && code) return Fail(words.front(), text);
  Json record;
  std::string shown;
  if (args.wait == 0) {
    const DWORD id = ::GetProcessId(process);
    ::CloseHandle(process);  // started, not waited for: the handle is ours
    record = {{"processId", id}};
    shown = std::to_string(id);
  } else if (result == WAIT_TIMEOUT) {
    record = {{"timeout", true}};
    shown = "timeout";
  } else {
    record = {{"exitCode", result}};
    shown = std::to_string(result);
  }
  if (args.json)
    PrintRecords(Json::array({record}), true, Layout::kLines);
  else
    printf("%s\n", shown.c_str());
  return 0;
}

}  // namespace

Runner DeclareRun(CLI::App& command) {
  auto args = std::make_shared<Arguments>();
  command.add_option("--wait", args->wait, "milliseconds to wait; 0: do not wait")
      ->check(CLI::Range(0ul, 0xFFFFFFFFul))
      ->default_str("no limit");
  command.add_option("--show", args->show, "the window's show state (SW_HIDE 0 ... 11)")
      ->check(CLI::Range(0, 11))
      ->capture_default_str();
  AddJsonFlag(command, args->json);
  // The program and its arguments are everything from the first operand on.
  command.prefix_command();
  command.footer("Prints the exit code, \"timeout\" or (with --wait 0) the process id.");
  CLI::App* self = &command;
  return [args, self] { return Run(*args, self->remaining()); };
}

}  // namespace tarn_tool
