// CNALogger: the diagnostic log "NALog.log" in the host's folder for logs, one entry per reported
// failure, with one older generation kept as "NAOldLog.log".
#pragma once

#include <cstddef>

#include "platform/ComBase.h"

class CNALogger {
 public:
  // A log larger than this many bytes is moved to "NAOldLog.log" before the next entry.
  static constexpr long kRotationSize = 50000;
  // Entries are bounded to this many characters with their line feed; longer ones are cut.
  static constexpr size_t kEntrySize = 1024;

  // Appends a failure: a time stamp line, then three spaces and "message  HRESULT=0x..." (with
  // the switch "NetworkAdapter.EnableLogContext" on, "prefix: message  HRESULT=0x...").
  static void Log(const char* prefix, const char* message, HRESULT hr);
  // Appends `text`, two spaces and the local time in the C library's "%c" form.
  static void LogText(const char* text);
  // The name of a host network status code (0x80049000 to 0x8004901D); "" for any other value.
  static const char* StatusName(HRESULT hr);

  // Forgets the log paths, so that the next entry looks for the folder again.
  static void ResetForTesting();
};
