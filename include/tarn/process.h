/// \file
/// Tarn: programs started and, if asked, waited for; a process's top-level
/// window, a free dialog item identifier and the state of a key.
///
/// The two launch functions end with the error out-parameters described in
/// tarn/core.h and block the calling thread while they wait. The window and
/// keyboard functions report by their result alone.
#ifndef TARN_PROCESS_H
#define TARN_PROCESS_H

#include <windows.h>

#include "tarn/core.h"
#include "tarn/tarn_export.h"

/// Starts a program with CreateProcessA and waits for it to end unless
/// dwMilliseconds is 0.
///   pszApplicationName  the program, passed on unchanged; may be null, the
///                       program then being the first token of the command
///                       line
///   pszCommandLine      copied into a buffer of the library's own, which is
///                       passed on (the caller's text is never written); may
///                       be null (not both)
///   wShowWindow         the show state (SW_ value) for the program's first
///                       window (STARTF_USESHOWWINDOW)
///   phProcess           receives the process handle once the program has
///                       started; may be null
///   dwCreationFlags     the creation flags, passed on unchanged
///   dwMilliseconds      0: return at once; otherwise the time-out of the wait
///                       (INFINITE: no limit)
/// No handle is inherited; the program gets the caller's environment and
/// current directory. The window that had the keyboard focus gets it back
/// right after the start.
/// Results:
///   -1   the program could not be started: the platform's code and text
///   1    started, not waited for: the handle in *phProcess is open and the
///        caller's to close (with phProcess null it stays open for good)
///   258  WAIT_TIMEOUT: the wait ran out; the program keeps running
///   else the program's exit code (0 when it cannot be read)
/// After a wait the handle stored in *phProcess is closed again by the call:
/// neither use nor close it. Exit codes -1, 1 and 258 cannot be told from the
/// other results. Throws std::bad_alloc when the command line cannot be copied.
TARN_API int TarnWinExecWait32(const char* pszApplicationName, const char* pszCommandLine,
                               WORD wShowWindow, HANDLE* phProcess, DWORD dwCreationFlags,
                               DWORD dwMilliseconds, DWORD* pdwError, char* pszError,
                               DWORD cchError);

/// TarnWinExecWait32 for 16-bit and MS-DOS programs: CREATE_SEPARATE_WOW_VDM
/// (0x800) is added to the creation flags on every system. On the Windows 95
/// family (VER_PLATFORM_WIN32_WINDOWS) the program-information file
/// "<Windows directory>\<base name of pszApplicationName>.pif" is made first
/// unless it exists: the library's own (an MS-DOS Prompt running
/// C:\WINDOWS\COMMAND.COM, "PIFFILE" resource 103 through the resource handle)
/// is written there. An existing file is left as it is, a failed write is
/// ignored, and nothing is written without an application name or when that
/// name or the file's path would be longer than 260 bytes. -1 with code 0 when
/// the system's version cannot be read.
TARN_API int TarnWinExecWait16(const char* pszApplicationName, const char* pszCommandLine,
                               WORD wShowWindow, HANDLE* phProcess, DWORD dwCreationFlags,
                               DWORD dwMilliseconds, DWORD* pdwError, char* pszError,
                               DWORD cchError);

// ---------------------------------------------------------------------------
/// \name Window and keyboard helpers.
// ---------------------------------------------------------------------------
/// @{

/// The highest control identifier not in use in the dialog hDlg: from 32767
/// (0x7FFF) downwards, the first identifier for which GetDlgItem finds no
/// control. Not the one after the highest in use: with controls 1, 2 and
/// 32767 the result is 32766. 1 when 32767 down to 2 are all taken (1 itself
/// is not looked up); 0 when hDlg is null.
TARN_API UINT TarnGetNextFreeDlgItemID(HWND hDlg);

/// A top-level window of the process dwProcessId: the first one EnumWindows
/// reports (top-level z-order), visible or hidden, owned or not; child windows
/// are never looked at. Null when the process has no top-level window or
/// there is no such process.
TARN_API HWND TarnGetHwndForProcId(DWORD dwProcessId);

/// 1 when the key nVirtKey (a VK_ code) is down, else 0: the high bit of
/// GetKeyState. The toggle state (Caps Lock on) does not count. The state is
/// what the calling thread's message queue has recorded with the messages read
/// so far, not the physical key at the moment of the call.
TARN_API int TarnIsKeyDown(int nVirtKey);
/// @}

#endif  // TARN_PROCESS_H
