// Folder and file-name helpers: the temporary folder, per-user state and configuration folders.
#pragma once

#include <string>

namespace parcelon {

#ifdef _WIN32
constexpr char kPathSeparator = '\\';
#else
constexpr char kPathSeparator = '/';
#endif

// Appends the path separator unless `folder` already ends with one ('\\' or '/').
void AppendSeparator(std::string& folder);

// The temporary folder: TEMP, else TMP, else (off Windows) TMPDIR, else "."; with a trailing
// separator.
std::string TempFolder();

// The per-user folder for the component's state (logs): %LOCALAPPDATA%\Parcelon on Windows,
// $XDG_STATE_HOME/parcelon or ~/.local/state/parcelon elsewhere. Empty when none is known.
std::string UserStateFolder();

// The per-user configuration folder: %APPDATA%\Parcelon on Windows, $XDG_CONFIG_HOME/parcelon or
// ~/.config/parcelon elsewhere. Empty when none is known.
std::string UserConfigFolder();

// Creates every missing level of `folder`. Returns false when the folder does not exist after.
bool CreateFolders(const std::string& folder);

// Reads an environment variable; empty when unset.
std::string GetEnv(const char* name);
// Sets (or with null `value`, removes) an environment variable of this process.
void SetEnv(const char* name, const char* value);

}  // namespace parcelon
