// Test helpers: scoped environment variables, scratch folders, file reading, BSTR literals.
#pragma once

#include <string>

#include "platform/Bstr.h"

namespace parcelon::test {

// Sets an environment variable (or removes it, for null) for the scope; restores it after.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool hadValue_;
};

// A fresh, empty folder under the system's temporary folder, removed with its content at the end.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  // The folder's path with a trailing separator.
  const std::string& Path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

// The whole content of a file; empty when it cannot be read.
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);

// A BSTR from UTF-8 text.
Bstr MakeBstr(const std::string& utf8);

}  // namespace parcelon::test
