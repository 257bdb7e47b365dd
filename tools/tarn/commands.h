// The commands of tarn.exe. Each takes the arguments after its name and
// returns the process exit code.
#ifndef TARN_TOOL_COMMANDS_H
#define TARN_TOOL_COMMANDS_H

int CmdAngle(int argc, char** argv);
int CmdPaths(int argc, char** argv);
int CmdVersion(int argc, char** argv);
int CmdTemp(int argc, char** argv);    // cmd_files.cpp
int CmdFolder(int argc, char** argv);  // cmd_files.cpp
int CmdDir(int argc, char** argv);     // cmd_files.cpp

int CmdDms(int argc, char** argv);    // cmd_numerics.cpp
int CmdGccc(int argc, char** argv);   // cmd_numerics.cpp
int CmdCrc32(int argc, char** argv);  // cmd_numerics.cpp

struct Command {
  const char* name;
  const char* usage;
  int (*run)(int argc, char** argv);
};

#endif  // TARN_TOOL_COMMANDS_H
