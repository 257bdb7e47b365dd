// tarn.exe: the library at work from the command line. Exit codes: 0
// success, 1 an operation failed, 2 a usage error.
#include <windows.h>

#include <stdio.h>

#include <map>
#include <string>

#include "commands.h"
#include "tarn/core.h"
#include "tarn/version.h"

namespace tarn_tool {
namespace {

const Command kCommands[] = {
    {"version", "version values of a module (tarn.dll by default) and the system",
     DeclareVersion},
    {"path", "path rules of each path, compared with the first", DeclarePath},
    {"temp", "the temporary directory, a fresh name, the module directories", DeclareTemp},
    {"folder", "known folders by name or CSIDL number, created when missing", DeclareFolder},
    {"dir", "the entries of each directory", DeclareDir},
    {"link", "make a directory a link (junction) to another, or try whether one can be made",
     DeclareLink},
    {"df", "free space of each path's drive for the calling user, in bytes and MiB", DeclareDf},
    {"angle", "an angle in every unit, range and text form", DeclareAngle},
    {"dms", "an angle as packed DD.MMSS and as degrees, minutes, seconds", DeclareDms},
    {"gccc", "an angle as packed GG.CCCC and as gon, centigon, centi-centigon", DeclareGccc},
    {"crc32", "the CRC-32 of files (zlib's checksum)", DeclareCrc32},
    {"run", "start a program, wait for it, print its exit code", DeclareRun},
    {"resource", "the resources of a module; one of them written to a file", DeclareResource},
    {"stg", "a compound file's tree, one stream's bytes, a file added as a stream",
     DeclareStorage},
    {"acl", "the DACL of a file or key; an entry for a built-in group merged in", DeclareAcl},
    {"access", "what opening a file with read or write access meets", DeclareAccess},
    {"play", "play a media file or MIDI sequence to its end (keys p, r, q)", DeclarePlay},
};

// "NAME VERSION" of a module from its version resource.
std::string ModuleVersion(const char* name, HINSTANCE module) {
  CTarnFileVersionInfo info;
  char version[64] = "(no version resource)";
  if (info.Open(module)) info.GetFileVersion(version, sizeof version);
  return std::string(name) + " " + version;
}

// A usage error: one line naming what was wrong, then where help is.
int UsageError(const CLI::App& app, const CLI::ParseError& error) {
  std::string command = "tarn";
  for (const CLI::App* sub : app.get_subcommands()) command += " " + sub->get_name();
  fprintf(stderr, "%s: %s\nRun '%s --help' for more information.\n", command.c_str(),
          error.what(), command.c_str());
  return 2;
}

}  // namespace
}  // namespace tarn_tool

int main(int argc, char** argv) {
  using namespace tarn_tool;
  CLI::App app{"tarn: the Tarn library at work", "tarn"};
  app.set_version_flag("--version", [] {
    return ModuleVersion("tarn.exe", ::GetModuleHandleW(nullptr)) + "\n" +
           ModuleVersion("tarn.dll", TarnGetResourceHandle());
  });
  app.footer("Exit codes: 0 success, 1 an operation failed, 2 a usage error.");
  std::map<const CLI::App*, Runner> runners;
  for (const Command& c : kCommands) {
    CLI::App* command = app.add_subcommand(c.name, c.about);
    runners[command] = c.declare(*command);
  }
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) throw CLI::RequiredError("a command");
    const CLI::App* command = app.get_subcommands().front();
    SetCommandName(command->get_name());
    return runners[command]();
  } catch (const CLI::Success& done) {  // --help, --version
    return app.exit(done);
  } catch (const CLI::ParseError& error) {
    return UsageError(app, error);
  }
}
