// File access through the host's file redirection service, which may keep the component's files
// elsewhere than named; where the host has no such service, the paths are used as they stand.
#pragma once

#include <cstdio>
#include <string>

#include "host/HostServices.h"

namespace parcelon {

class RedirectedFiles {
 public:
  // Looks the host's service up once, for the lifetime of this object.
  RedirectedFiles();

  // The path to use for `path`; false when the host's service fails to map it.
  bool Map(const char* path, std::string& mapped) const;
  // The C library's fopen of the mapped path; null when the path cannot be mapped or opened.
  FILE* Open(const char* path, const char* mode) const;
  // Renames a file; true on success.
  bool Rename(const char* from, const char* to) const;
  // Deletes a file; true on success.
  bool Remove(const char* path) const;

 private:
  IFileRedirectionServicePtr service_;
};

// Opens `path` with the C library's `mode` through the host's file redirection.
FILE* OpenRedirectedFile(const char* path, const char* mode);

}  // namespace parcelon
