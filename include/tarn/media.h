/// \file
/// Tarn: one MIDI sequence or one media file played in the background through
/// MCI command strings (mciSendStringA, no return text).
///
/// A sequence is opened under the alias "MUSIC", a media file under "FILE";
/// the devices belong to the calling process and the library keeps no state.
/// At most one of them is open through these functions at a time: each play
/// first sends "close all", which closes every MCI device of the process (a
/// play of one family ends the other), and both stop functions send that same
/// command. When a play ends, MCI posts MM_MCINOTIFY to hWnd (wParam
/// MCI_NOTIFY_SUCCESSFUL, _SUPERSEDED, _ABORTED or _FAILURE, lParam the
/// device); the library does not handle that message itself. Playback goes
/// on after the call returns; at its end the device stays open.
///
/// Every function returns 1 when MCI accepted every command it sent, else 0
/// (MCI's error codes are not passed on). hWnd is the callback window of every
/// command but the open command, which has none.
#ifndef TARN_MEDIA_H
#define TARN_MEDIA_H

#include <windows.h>

#include "tarn/tarn_export.h"

// ---------------------------------------------------------------------------
/// \name MIDI sequence, alias "MUSIC".
// ---------------------------------------------------------------------------
/// @{

/// Sends "close all", "open PATH type sequencer alias MUSIC" and "play MUSIC
/// from 0 notify", stopping at the first that fails.
///   pszPath  the sequence's file, inserted as it is, without quotation
///            marks: a path with blanks reaches MCI as several words and
///            fails to open. At most 487 bytes (the command fits 520 bytes);
///            0 without sending anything for a longer, null or empty path.
/// When the open fails after "close all", nothing is left open.
TARN_API int TarnPlayMidi(HWND hWnd, const char* pszPath);

/// "stop MUSIC": halts the sequence and keeps its position. 0 when no
/// sequence is open.
TARN_API int TarnPauseMidi(HWND hWnd);

/// "play MUSIC notify": plays on from where the sequence stopped. 0 when no
/// sequence is open.
TARN_API int TarnResumeMidi(HWND hWnd);

/// "close all": closes every MCI device of the process, a media file too.
TARN_API int TarnStopMidi(HWND hWnd);

/// "play MUSIC from 0 notify": plays the sequence again from its start. 0 when
/// no sequence is open.
TARN_API int TarnReplayMidi(HWND hWnd);

/// @}

// ---------------------------------------------------------------------------
/// \name Media file, alias "FILE"; MCI chooses the device by the file's extension.
// ---------------------------------------------------------------------------
/// @{

/// Sends "close all", "open PATH alias FILE" and "play FILE from 0 notify",
/// stopping at the first that fails.
///   pszPath  the media file, inserted as it is, without quotation marks: a
///            path with blanks reaches MCI as several words and fails to
///            open. At most 503 bytes (the command fits 520 bytes); 0 without
///            sending anything for a longer, null or empty path.
/// When the open fails after "close all", nothing is left open.
TARN_API int TarnPlayFile(HWND hWnd, const char* pszPath);

/// "stop FILE": halts the file and keeps its position. 0 when no file is open.
TARN_API int TarnPauseFile(HWND hWnd);

/// "play FILE notify": plays on from where the file stopped. 0 when no file is
/// open.
TARN_API int TarnResumeFile(HWND hWnd);

/// "close all": the same as TarnStopMidi; closes a sequence too.
TARN_API int TarnStopFile(HWND hWnd);

/// "play FILE from 0 notify": plays the file again from its start. 0 when no
/// file is open.
TARN_API int TarnReplayFile(HWND hWnd);
/// @}

#endif  // TARN_MEDIA_H
