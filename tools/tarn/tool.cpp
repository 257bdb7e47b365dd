#include "tool.h"

#include <windows.h>

#include <math.h>
#include <stdio.h>

#include <algorithm>

namespace tarn_tool {
namespace {

std::string g_command;

std::string ValueText(const Json& value) {
  if (value.is_null()) return "-";
  if (value.is_string()) return value.get<std::string>();
  return value.dump();
}

// The text on one line: line breaks become spaces, the ends are trimmed.
std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\r', ' ');
  std::replace(text.begin(), text.end(), '\n', ' ');
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool ParseFinite(const std::string& text, double* value) {
  return CLI::detail::lexical_cast(text, *value) && isfinite(*value);
}

}  // namespace

void AddJsonFlag(CLI::App& command, bool& json) {
  command.add_flag("--json", json, "print the records as JSON");
}

void PrintRecords(const Json& records, bool json, Layout layout) {
  if (json) {
    printf("%s\n", records.dump(2).c_str());
    return;
  }
  bool first = true;
  for (const Json& record : records) {
    if (layout == Layout::kRow) {
      std::string line;
      for (const auto& field : record.items())
        line += (line.empty() ? "" : "  ") + ValueText(field.value());
      printf("%s\n", line.c_str());
      continue;
    }
    if (!first) printf("\n");
    first = false;
    size_t width = 0;
    for (const auto& field : record.items()) width = std::max(width, field.key().size());
    for (const auto& field : record.items())
      printf("%-*s  %s\n", static_cast<int>(width), field.key().c_str(),
             ValueText(field.value()).c_str());
  }
}

int Fail(const std::string& operand, const std::string& text) {
  fflush(stdout);
  fprintf(stderr, "tarn %s: %s: %s\n", g_command.c_str(), operand.c_str(), OneLine(text).c_str());
  return 1;
}

std::string SystemText(unsigned long code) {
  char text[512] = "";
  ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0,
                   text, sizeof text, nullptr);
  return text;
}

void SetCommandName(const std::string& name) { g_command = name; }

const CLI::Validator kFinite(
    [](std::string& text) {
      double value = 0;
      return ParseFinite(text, &value) ? std::string() : "not a finite number: " + text;
    },
    "NUMBER");

double FiniteNumber(const std::string& text, const std::string& what) {
  double value = 0;
  if (!ParseFinite(text, &value)) throw CLI::ValidationError(what, "not a finite number: " + text);
  return value;
}

}  // namespace tarn_tool
