// Identifies the running system from GetVersionExA once, at construction.
#include "version/system_version.h"

#include <string.h>

using OS = CTarnSystemVersionInfo::eOperatingSystem;

static_assert(sizeof(OSVERSIONINFOEXA) == 156, "extended record as the platform publishes it");
static_assert(sizeof(OSVERSIONINFOA) == 148, "basic record as the platform publishes it");

namespace tarn {

OS IdentifyOperatingSystem(const OSVERSIONINFOEXA& record) noexcept {
  const DWORD major = record.dwMajorVersion;
  const DWORD minor = record.dwMinorVersion;
  switch (record.dwPlatformId) {
    case VER_PLATFORM_WIN32s:
      return CTarnSystemVersionInfo::eWin32S;
    case VER_PLATFORM_WIN32_WINDOWS:
      if (major > 4) return CTarnSystemVersionInfo::eWinME;
      if (major < 4 || minor == 0) return CTarnSystemVersionInfo::eWin95;
      return minor >= 90 ? CTarnSystemVersionInfo::eWinME : CTarnSystemVersionInfo::eWin98;
    case VER_PLATFORM_WIN32_NT:
      if (major < 4) return CTarnSystemVersionInfo::eNT35;
      if (major == 4) return CTarnSystemVersionInfo::eNT40;
      if (major == 5) {
        switch (minor) {
          case 0:
            return CTarnSystemVersionInfo::eWin2000;
          case 1:
            return CTarnSystemVersionInfo::eWinXP;
          case 2:
            return CTarnSystemVersionInfo::eWinServer2003;
          default:
            return CTarnSystemVersionInfo::eUnknownOS;
        }
      }
      // From major version 6 on only the minor version tells systems apart.
      switch (minor) {
        case 0:
          return CTarnSystemVersionInfo::eWinVista;
        case 1:
          return CTarnSystemVersionInfo::eWin7;
        default:
          return CTarnSystemVersionInfo::eUnknownOS;
      }
    default:
      return CTarnSystemVersionInfo::eUnknownOS;
  }
}

BOOL IsMultiUserTerminalServer(const OSVERSIONINFOEXA& record) noexcept {
  return (record.wSuiteMask & (VER_SUITE_TERMINAL | VER_SUITE_SINGLEUSERTS)) == VER_SUITE_TERMINAL
             ? TRUE
             : FALSE;
}

}  // namespace tarn

namespace {

BOOL QueryVersion(OSVERSIONINFOEXA& record, DWORD size) {
  record.dwOSVersionInfoSize = size;
#ifdef _MSC_VER
#pragma warning(suppress : 4996)  // deprecated in newer SDKs; its answer is what is wanted
#endif
  return ::GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&record));
}

}  // namespace

CTarnSystemVersionInfo::CTarnSystemVersionInfo()
    : m_osvi(), m_bExtended(FALSE), m_bTerminalServer(FALSE), m_eOperatingSystem(eUnknownOS) {
  m_bExtended = QueryVersion(m_osvi, sizeof(OSVERSIONINFOEXA));
  if (!m_bExtended) {
    // Systems before NT 4 SP6 know only the basic record; whatever the
    // refused call left is cleared so that the suite mask reads 0.
    memset(&m_osvi, 0, sizeof m_osvi);
    if (!QueryVersion(m_osvi, sizeof(OSVERSIONINFOA))) {
      memset(&m_osvi, 0, sizeof m_osvi);
      return;
    }
  }
  m_bTerminalServer = tarn::IsMultiUserTerminalServer(m_osvi);
  m_eOperatingSystem = tarn::IdentifyOperatingSystem(m_osvi);
}

CTarnSystemVersionInfo::CTarnSystemVersionInfo(const CTarnSystemVersionInfo& other) = default;
CTarnSystemVersionInfo& CTarnSystemVersionInfo::operator=(const CTarnSystemVersionInfo& other) =
    default;
CTarnSystemVersionInfo::~CTarnSystemVersionInfo() = default;

OS CTarnSystemVersionInfo::GetOperatingSystem() const { return m_eOperatingSystem; }
int CTarnSystemVersionInfo::IsUnknownOS() const { return m_eOperatingSystem == eUnknownOS; }
int CTarnSystemVersionInfo::IsWin32S() const { return m_eOperatingSystem == eWin32S; }
int CTarnSystemVersionInfo::IsWin95() const { return m_eOperatingSystem == eWin95; }
int CTarnSystemVersionInfo::IsWin98() const { return m_eOperatingSystem == eWin98; }
int CTarnSystemVersionInfo::IsWinME() const { return m_eOperatingSystem == eWinME; }
int CTarnSystemVersionInfo::IsNT35() const { return m_eOperatingSystem == eNT35; }
int CTarnSystemVersionInfo::IsNT40() const { return m_eOperatingSystem == eNT40; }
int CTarnSystemVersionInfo::IsWin2000() const { return m_eOperatingSystem == eWin2000; }
int CTarnSystemVersionInfo::IsWinXP() const { return m_eOperatingSystem == eWinXP; }
int CTarnSystemVersionInfo::IsWinServer2003() const { return m_eOperatingSystem == eWinServer2003; }
int CTarnSystemVersionInfo::IsWinVista() const { return m_eOperatingSystem == eWinVista; }
int CTarnSystemVersionInfo::IsWinNTPlatform() const {
  return m_osvi.dwPlatformId == VER_PLATFORM_WIN32_NT;
}
int CTarnSystemVersionInfo::IsTerminalServer() const { return m_bTerminalServer ? 1 : 0; }
