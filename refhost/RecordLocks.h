// Record locks shared by every process that opens one company store: a byte-range lock per
// record name in a lock file beside the store, which the kernel drops when its holder dies.
#pragma once

#ifndef _WIN32

#include <cstdint>
#include <map>
#include <string>

#include "refhost/Text.h"

namespace parcelon::refhost {

// The locks of one store, as one open lock file. Each record name locks one byte at an offset
// hashed from the name (open file description locks, F_OFD_SETLK): two opens of the lock file,
// in one process or in two, exclude each other, and closing the file, or the death of the
// process, releases what it held. Within one open the holders are tracked here, so that two
// record objects of one process exclude each other too.
class RecordLocks {
 public:
  // Opens (creating it if needed) the lock file. Throws StoreError when it cannot.
  explicit RecordLocks(const std::string& lockFile);
  ~RecordLocks();
  RecordLocks(const RecordLocks&) = delete;
  RecordLocks& operator=(const RecordLocks&) = delete;

  // Takes the lock of `name` for `holder` unless someone else holds it; taking a lock one
  // already holds succeeds. Never waits. Throws StoreError when the lock file fails.
  bool TryLock(const Text& name, const void* holder);
  // Releases the lock if `holder` holds it; false when it did not.
  bool Unlock(const Text& name, const void* holder);

  // The byte of the lock file that stands for a record name: FNV-1a of the name's UTF-16 code
  // units, kept below 2^62 so that the range fits any file offset.
  static uint64_t OffsetOf(const Text& name);

 private:
  // Sets or clears the byte's lock; false when another open file description holds it.
  bool Lock(uint64_t offset, bool take);

  std::string path_;
  int fd_ = -1;
  std::map<Text, const void*> holders_;
  // How many held names share each locked byte (a hash collision locks one byte for two names).
  std::map<uint64_t, int> bytes_;
};

}  // namespace parcelon::refhost

#endif  // !_WIN32
