// What the commands of tarn.exe share: how a command is declared, how records
// are printed (plain lines or JSON) and how a failure is reported.
#ifndef TARN_TOOL_TOOL_H
#define TARN_TOOL_TOOL_H

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace tarn_tool {

using Json = nlohmann::ordered_json;

// Runs a parsed command and returns the process's exit code: 0 success,
// 1 an operation failed. A usage error found only while running (a value
// whose form depends on another operand) is thrown as CLI::ValidationError
// and ends the process with 2, like any other.
using Runner = std::function<int()>;

// One command: `declare` adds the operands and options to `command`, bound
// to variables the returned runner holds (a shared structure of arguments),
// and returns that runner. Adding a command is a file
// with its declare function and a row in main.cpp's table.
struct Command {
  const char* name;
  const char* about;
  Runner (*declare)(CLI::App& command);
};

// Adds --json to `command`, setting `json`.
void AddJsonFlag(CLI::App& command, bool& json);

// How records print without --json.
enum class Layout {
  kLines,  // a "name  value" line a field, a blank line between records
  kRow,    // one line a record: its values separated by two spaces
};

// Prints `records` (a JSON array of objects) on stdout: the array itself with
// --json, else in `layout`. A null value prints as "-".
void PrintRecords(const Json& records, bool json, Layout layout);

// Reports that an operation failed on `operand`: "tarn COMMAND: OPERAND: TEXT"
// on stderr, TEXT trimmed to one line. Returns 1, the exit code for it.
int Fail(const std::string& operand, const std::string& text);

// The system's text for an error code (of a platform call the tool makes
// itself; the library's operations hand theirs out).
std::string SystemText(unsigned long code);

// The command being run (for Fail); set by main.
void SetCommandName(const std::string& name);

// Accepts a finite floating-point number (strtod's syntax, all of the text).
extern const CLI::Validator kFinite;

// Parses a finite number, or throws CLI::ValidationError naming `what`.
double FiniteNumber(const std::string& text, const std::string& what);

}  // namespace tarn_tool

#endif  // TARN_TOOL_TOOL_H
