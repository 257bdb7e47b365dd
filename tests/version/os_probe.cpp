// Started by the system version tests under a Windows version that Wine is
// told to report for this program: prints what CTarnSystemVersionInfo (from
// tarn.dll) identified and what the platform reported, on one line.
#include <windows.h>

#include <stdio.h>

#include "tarn/version.h"

int main() {
  const CTarnSystemVersionInfo info;
  const CTarnSystemVersionInfo copy(info);
  OSVERSIONINFOEXA record = {};
  record.dwOSVersionInfoSize = sizeof record;
  ::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record));
  // Bit n: the predicate of eOperatingSystem value n answered 1.
  const int predicates[] = {info.IsUnknownOS(),     info.IsWin32S(),  info.IsWin95(),
                            info.IsWin98(),         info.IsWinME(),   info.IsNT35(),
                            info.IsNT40(),          info.IsWin2000(), info.IsWinXP(),
                            info.IsWinServer2003(), info.IsWinVista()};
  unsigned mask = 0;
  for (unsigned i = 0; i < sizeof predicates / sizeof predicates[0]; ++i)
    if (predicates[i]) mask |= 1u << i;
  const bool copySame = copy.GetOperatingSystem() == info.GetOperatingSystem() &&
                        copy.IsWinNTPlatform() == info.IsWinNTPlatform() &&
                        copy.IsTerminalServer() == info.IsTerminalServer();
  printf("os=%d nt=%d ts=%d predicates=%u copy=%d platform=%lu version=%lu.%lu\n",
         static_cast<int>(info.GetOperatingSystem()), info.IsWinNTPlatform(),
         info.IsTerminalServer(), mask, copySame ? 1 : 0, record.dwPlatformId,
         record.dwMajorVersion, record.dwMinorVersion);
  return 0;
}
