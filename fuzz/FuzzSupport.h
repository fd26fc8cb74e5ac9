// What the fuzz targets share: a scratch folder for the log and the settings file, and a stop
// that names what went wrong before aborting (libFuzzer then keeps the input as a crash file).
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace parcelon::fuzz {

// Prints the broken expectation and aborts, so that the input is reported as a finding.
[[noreturn]] inline void Finding(const std::string& what) {
  std::fprintf(stderr, "FINDING: %s\n", what.c_str());
  std::fflush(stderr);
  std::abort();
}

// A fresh folder for this process under the temporary folder; the log, its state and the
// settings file go there, away from the developer's own.
inline const std::string& ScratchFolder() {
  static const std::string folder = [] {
    const char* tmp = std::getenv("TMPDIR");
    std::string path = std::string(tmp && *tmp ? tmp : "/tmp") + "/parcelon-fuzz-XXXXXX";
    if (!mkdtemp(path.data())) Finding("cannot make a scratch folder");
    return path;
  }();
  return folder;
}

// Points the log folder, the configuration folder and the settings file into the scratch folder.
// Returns the settings file's path.
inline std::string UseScratchFolder() {
  const std::string& folder = ScratchFolder();
  setenv("XDG_STATE_HOME", folder.c_str(), 1);
  setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
  const std::string settings = folder + "/ZPSSettings.aov";
  setenv("PARCELON_SETTINGS", settings.c_str(), 1);
  return settings;
}

// Replaces the file at `path` with `bytes`.
inline void WriteFile(const std::string& path, const std::string& bytes) {
  FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) Finding("cannot write " + path);
  if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
    Finding("cannot write " + path);
  std::fclose(file);
}

// What an escaped and cleaned value reads back as: entities give their characters again, 0x92
// gives an apostrophe, and the bytes outside tab, line feed and 0x20 to 0x7F are gone.
inline std::string Cleaned(const std::string& ansi) {
  std::string out;
  for (const char c : ansi) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte == 0x92) out += '\'';
    else if (byte == '\t' || byte == '\n' || (byte >= 0x20 && byte <= 0x7F)) out += c;
  }
  return out;
}

}  // namespace parcelon::fuzz
