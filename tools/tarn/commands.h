// The commands of tarn.exe: each file declares one or more with a function
// of this shape, listed in main.cpp's table.
#ifndef TARN_TOOL_COMMANDS_H
#define TARN_TOOL_COMMANDS_H

#include "tool.h"

namespace tarn_tool {

Runner DeclareVersion(CLI::App& command);  // cmd_version.cpp
Runner DeclarePath(CLI::App& command);     // cmd_paths.cpp
Runner DeclareTemp(CLI::App& command);     // cmd_files.cpp
Runner DeclareFolder(CLI::App& command);   // cmd_files.cpp
Runner DeclareDir(CLI::App& command);      // cmd_files.cpp
Runner DeclareLink(CLI::App& command);     // cmd_disk.cpp
Runner DeclareDf(CLI::App& command);       // cmd_disk.cpp
Runner DeclareAngle(CLI::App& command);    // cmd_angle.cpp
Runner DeclareDms(CLI::App& command);      // cmd_numerics.cpp
Runner DeclareGccc(CLI::App& command);     // cmd_numerics.cpp
Runner DeclareCrc32(CLI::App& command);    // cmd_numerics.cpp
Runner DeclareRun(CLI::App& command);      // cmd_process.cpp
Runner DeclareResource(CLI::App& command); // cmd_resource.cpp
Runner DeclareStorage(CLI::App& command);  // cmd_storage.cpp
Runner DeclareAcl(CLI::App& command);      // cmd_security.cpp
Runner DeclareAccess(CLI::App& command);   // cmd_security.cpp
Runner DeclarePlay(CLI::App& command);     // cmd_media.cpp

}  // namespace tarn_tool

#endif  // TARN_TOOL_COMMANDS_H
