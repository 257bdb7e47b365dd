/// \file
/// Tarn: a module's version resource and the operating system's version.
///
/// Text goes out as narrow text in the calling thread's ANSI code page. Every
/// text query takes a caller-owned buffer and its size in bytes (terminator
/// included); a null buffer or a size of 0 makes it return 0 without touching
/// anything. Otherwise the whole buffer is zero-filled first and text longer
/// than size - 1 bytes is cut (still a success). Neither class reports error
/// codes; only std::bad_alloc can leave an operation.
#ifndef TARN_VERSION_H
#define TARN_VERSION_H

#include <windows.h>

#include "tarn/core.h"
#include "tarn/tarn_export.h"

/// The version resource of an executable file or module. Closed after
/// construction; open while it holds the version block of one file.
/// Copies are independent objects that answer every query exactly as their
/// source did when copied.
class TARN_API CTarnFileVersionInfo {
 public:
  /// Closed. Loads s_szNotAvailable on the first construction in the process.
  CTarnFileVersionInfo();
  /// Copies everything `other` holds.
  CTarnFileVersionInfo(const CTarnFileVersionInfo& other);
  /// Releases what this object held and takes a copy of what `other` holds.
  CTarnFileVersionInfo& operator=(const CTarnFileVersionInfo& other);
  virtual ~CTarnFileVersionInfo();

  /// Loads s_szNotAvailable (string 1 of the module TarnGetResourceHandle()
  /// returns at that moment) unless it was loaded or tried before; never
  /// repeated, even when that module has no string 1 (the text stays empty).
  /// Safe to call from several threads at once.
  static void Initialize();

  /// Opens the version resource of a loaded module (null: the process's
  /// executable). 0 if its file name cannot be had, else as Open(path).
  int Open(HINSTANCE hInstance);
  /// Opens the version resource of the file `pszPath` (kept as given, for the
  /// help-file search beside it). 0, and the object unchanged, when the path
  /// is null or empty or the object is already open. 0, and the object
  /// closed, when the file has no version resource or the resource has no
  /// "\VarFileInfo\Translation" table; its first entry (language, code page)
  /// becomes the object's translation.
  int Open(const char* pszPath);
  /// Releases the version block and the path; harmless on a closed object.
  void Close();

  /// The string value `pszValueName` under translation `dwTranslation`
  /// (language in the high word, code page in the low; 0 = the object's own,
  /// e.g. 0x040704E4 reads "\StringFileInfo\040704e4\<name>").
  /// 1 on success. A value the resource lacks, or one of length 0: 0 with the
  /// buffer empty (a value stored as a lone terminator gives 1 and an empty
  /// text). A null or empty name, or a closed object: 0 with the
  /// not-available text in the buffer.
  int QueryValue(char* pszBuffer, DWORD cchBuffer, const char* pszValueName, DWORD dwTranslation);

  /// QueryValue of "CompanyName", "FileDescription", "FileVersion",
  /// "InternalName", "LegalCopyright", "OriginalFilename", "ProductName" and
  /// "ProductVersion" under the object's own translation.
  /// @{
  int GetCompanyName(char* pszBuffer, DWORD cchBuffer);
  int GetFileDescription(char* pszBuffer, DWORD cchBuffer);
  int GetFileVersion(char* pszBuffer, DWORD cchBuffer);
  int GetInternalName(char* pszBuffer, DWORD cchBuffer);
  int GetLegalCopyright(char* pszBuffer, DWORD cchBuffer);
  int GetOriginalFilename(char* pszBuffer, DWORD cchBuffer);
  int GetProductName(char* pszBuffer, DWORD cchBuffer);
  int GetProductVersion(char* pszBuffer, DWORD cchBuffer);
  /// @}

  /// The full path of an existing help file (extension ".hlp") beside the
  /// opened file. Its base name is taken from the first that applies: the
  /// existing file beside the opened one that the value "HelpFileName" names,
  /// the one that "InternalName" names (a name without extension takes the
  /// opened file's), the opened file itself. 1 if "<that base>.hlp" exists;
  /// else, and on a closed object, 0 with the buffer empty.
  int GetHelpFileName(char* pszBuffer, DWORD cchBuffer);

  /// Copies the fixed-information record into `info`. 0 on a closed object or
  /// when the resource has no fixed record; `info` is then untouched.
  int GetFixedInfo(VS_FIXEDFILEINFO& info);
  /// The fixed file or product version as "major,minor,build,revision"
  /// (decimal 16-bit words, commas without blanks, e.g. "2,7,0,1234").
  /// 0 with the not-available text on a closed object or without a fixed
  /// record.
  /// @{
  int GetFixedFileVersion(char* pszBuffer, DWORD cchBuffer);
  int GetFixedProductVersion(char* pszBuffer, DWORD cchBuffer);
  /// @}

 protected:
  /// The text given out when a value cannot be had ("Not Available" from the
  /// library's own resources); empty until loaded.
  static char s_szNotAvailable[260];

 private:
  /// The opened file's drive and directory with the base name of
  /// `pszFilename` and its extension, or the opened file's when it has none.
  /// Does not look at the disk.
  int GetFullPath(char* pszBuffer, DWORD cchBuffer, const char* pszFilename) const;
  /// GetFullPath of the string value `pszValueName` if that file exists.
  int GetValidFileName(char* pszBuffer, DWORD cchBuffer, const char* pszValueName);

  BYTE* m_pVersionData;  ///< owned; null while closed
  DWORD m_dwTranslation;
  char* m_pszFilePath;  ///< owned copy of the opened path
};

/// The running operating system, identified once at construction from
/// GetVersionExA (the extended record, else the basic one). Objects are plain
/// values.
class TARN_API CTarnSystemVersionInfo {
 public:
  /// The systems told apart.
  enum eOperatingSystem {
    eUnknownOS = 0,
    eWin32S = 1,
    eWin95 = 2,
    eWin98 = 3,
    eWinME = 4,
    eNT35 = 5,
    eNT40 = 6,
    eWin2000 = 7,
    eWinXP = 8,
    eWinServer2003 = 9,
    eWinVista = 10,  ///< also NT 6.0 servers, and any NT major version above 6 with minor 0
    eWin7 = 11       ///< NT 6.1 and above with minor 1; no predicate
  };

  /// Asks the platform; when both queries fail the object is eUnknownOS, not
  /// NT and not a terminal server.
  CTarnSystemVersionInfo();
  /// Copies every member of `other`.
  CTarnSystemVersionInfo(const CTarnSystemVersionInfo& other);
  /// Copies every member of `other`.
  CTarnSystemVersionInfo& operator=(const CTarnSystemVersionInfo& other);
  virtual ~CTarnSystemVersionInfo();

  /// The system identified at construction.
  eOperatingSystem GetOperatingSystem() const;
  /// 1 when GetOperatingSystem() is the value named, else 0.
  /// @{
  int IsUnknownOS() const;
  int IsWin32S() const;
  int IsWin95() const;
  int IsWin98() const;
  int IsWinME() const;
  int IsNT35() const;
  int IsNT40() const;
  int IsWin2000() const;
  int IsWinXP() const;
  int IsWinServer2003() const;
  int IsWinVista() const;
  /// @}
  /// 1 when the platform identifier is VER_PLATFORM_WIN32_NT, whatever the
  /// identified system (an NT version this class does not name included).
  int IsWinNTPlatform() const;
  /// 1 when terminal services are present in multi-session form (suite mask
  /// has VER_SUITE_TERMINAL without VER_SUITE_SINGLEUSERTS), else 0.
  int IsTerminalServer() const;

 private:
  OSVERSIONINFOEXA m_osvi;
  BOOL m_bExtended;  ///< the extended record was obtained
  BOOL m_bTerminalServer;
  eOperatingSystem m_eOperatingSystem;
};

#endif  // TARN_VERSION_H
