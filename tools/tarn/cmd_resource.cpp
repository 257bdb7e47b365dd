// tarn resource MODULE [TYPE NAME [OUT]]: the resources of a module, or one
// of them (its size; written to OUT through TarnCreateFileFromResource).
#include <windows.h>

#include "commands.h"
#include "tarn/memory.h"

namespace tarn_tool {
namespace {

// The platform's numbered resource types, by name.
const std::map<unsigned, const char*> kTypeNames = {
    {1, "CURSOR"},  {2, "BITMAP"},       {3, "ICON"},          {4, "MENU"},
    {5, "DIALOG"},  {6, "STRING"},       {7, "FONTDIR"},       {8, "FONT"},
    {9, "ACCELERATOR"}, {10, "RCDATA"},  {11, "MESSAGETABLE"}, {12, "GROUP_CURSOR"},
    {14, "GROUP_ICON"}, {16, "VERSION"}, {24, "MANIFEST"},
};

std::string Name(const char* name) {
  if (!IS_INTRESOURCE(name)) return name;
  return "#" + std::to_string(reinterpret_cast<ULONG_PTR>(name));
}

// "#N", a plain number or a numbered type's name as an integer identifier;
// anything else is a name.
struct Identifier {
  std::string text;
  const char* get() const {
    unsigned number = 0;
    const std::string digits = text[0] == '#' ? text.substr(1) : text;
    if (CLI::detail::lexical_cast(digits, number) && number > 0 && number <= 0xFFFF)
      return MAKEINTRESOURCEA(number);
    for (const auto& type : kTypeNames)
      if (text == type.second) return MAKEINTRESOURCEA(type.first);
    return text.c_str();
  }
};

struct Arguments {
  std::string module;
  Identifier type, name;
  std::string out;
  bool json = false;
};

struct Listing {
  HMODULE module;
  Json records = Json::array();
};

BOOL CALLBACK AddName(HMODULE module, LPCSTR type, LPSTR name, LONG_PTR context) {
  Listing& listing = *reinterpret_cast<Listing*>(context);
  DWORD size = 0;
  TarnLoadFromResource(module, name, type, &size, nullptr, nullptr, 0);
  const auto known = IS_INTRESOURCE(type)
                         ? kTypeNames.find(static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(type)))
                         : kTypeNames.end();
  listing.records.push_back({{"type", known != kTypeNames.end() ? known->second : Name(type)},
                             {"name", Name(name)},
                             {"size", size}});
  return TRUE;
}

BOOL CALLBACK AddType(HMODULE module, LPSTR type, LONG_PTR context) {
  ::EnumResourceNamesA(module, type, AddName, context);
  return TRUE;
}

int Run(const Arguments& args) {
  // As data only: nothing of the module runs.
  const HMODULE module = ::LoadLibraryExA(args.module.c_str(), nullptr,
                                          LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
  if (!module) return Fail(args.module, SystemText(::GetLastError()));
  int result = 0;
  DWORD code = 0;
  char text[512] = "";
  if (args.type.text.empty()) {
    Listing listing{module};
    ::EnumResourceTypesA(module, AddType, reinterpret_cast<LONG_PTR>(&listing));
    PrintRecords(listing.records, args.json, Layout::kRow);
  } else if (args.out.empty()) {
    DWORD size = 0;
    if (TarnLoadFromResource(module, args.name.get(), args.type.get(), &size, &code, text,
                             sizeof text))
      PrintRecords(Json::array({{{"type", args.type.text}, {"name", args.name.text}, {"size", size}}}),
                   args.json, Layout::kRow);
    else
      result = Fail(args.type.text + " " + args.name.text, text);
  } else if (!TarnCreateFileFromResource(args.out.c_str(), module, args.name.get(), args.type.get(),
                                         &code, text, sizeof text)) {
    result = Fail(code ? args.type.text + " " + args.name.text : args.out, text);
  }
  ::FreeLibrary(module);
  return result;
}

}  // namespace

Runner DeclareResource(CLI::App& command) {
  auto args = std::make_shared<Arguments>();
  command.add_option("module", args->module, "a DLL or program")->required();
  command.add_option("type", args->type.text, "a type: a name, #N or N, or RCDATA, VERSION, ...");
  command.add_option("name", args->name.text, "a resource: a name, #N or N");
  command.add_option("out", args->out, "the file to write the resource to");
  AddJsonFlag(command, args->json);
  command.footer("Without TYPE: every resource's type, name and size. With TYPE NAME: its size,\n"
                 "or with OUT the file written (replaced when it exists).");
  return [args] {
    if (!args->type.text.empty() && args->name.text.empty())
      throw CLI::RequiredError("name (with a type)");
    return Run(*args);
  };
}

}  // namespace tarn_tool
