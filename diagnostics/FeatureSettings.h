// AmbitAccess: the feature switches and gateway addresses, read from the settings file
// "ZPSSettings.aov" and kept in memory, so that a read costs a hash lookup.
//
// The file is named by the environment variable PARCELON_SETTINGS (its full path) or else lies in
// the per-user configuration folder. It is an INI file: the switches are in the section
// "ZPSSettings", the gateway addresses in the section "URLs"; keys compare without regard to case.
// Every read first checks, at most once per kCheckIntervalSeconds, whether the file (its path,
// size or modification time) has changed, and reloads it if so; Reload() forces that.
//
// Values: a switch is on for "true", "yes", "on" (any case) or a non-zero number; anything else,
// and a missing key, reads off. A number is decimal with an optional sign and must fit an int;
// anything else reads 0. Lines that cannot be read (no "=", longer than kMaxLineLength
// characters) are ignored, and a file larger than kMaxFileSize bytes reads as empty; both are
// logged at the load.
#pragma once

#include <cstddef>
#include <string>

class AmbitAccess {
 public:
  static constexpr const char* kFeatureSection = "ZPSSettings";
  static constexpr const char* kUrlSection = "URLs";
  static constexpr const char* kFileName = "ZPSSettings.aov";
  static constexpr const char* kPathVariable = "PARCELON_SETTINGS";
  static constexpr int kCheckIntervalSeconds = 2;
  static constexpr size_t kMaxFileSize = 1024 * 1024;
  static constexpr size_t kMaxLineLength = 196;

  // The switch `key` of `section`; off unless the file turns it on. `reserved` is not used.
  static bool GetFeatureParamAsBool(const char* section, const char* key, void* reserved);
  // The number `key` of `section`; 0 unless the file gives a valid one. `reserved` is not used.
  static int GetFeatureParamAsInt(const char* section, const char* key, void* reserved);
  // The address stored under `key` in the section "URLs"; empty when there is none.
  static std::string GetURLAddress(const char* key);

  // Looks for the file again and reloads it now, whether or not it has changed.
  static void Reload();
  // Has the next read check for a change at once, as when the check interval has passed.
  static void CheckAtNextRead();
};
