// Record locks as open file description locks on bytes of the lock file.
#include "refhost/RecordLocks.h"

#ifndef _WIN32

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "refhost/DataFileStore.h"

namespace parcelon::refhost {

namespace {

[[noreturn]] void FailWithErrno(const std::string& path, const char* what) {
  const int error = errno;
  throw StoreError(E_FAIL, "lock file \"" + path + "\": " + what + ": " + std::strerror(error));
}

}  // namespace

RecordLocks::RecordLocks(const std::string& lockFile) : path_(lockFile) {
  fd_ = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd_ < 0) FailWithErrno(path_, "cannot open");
}

RecordLocks::~RecordLocks() {
  // Closing the file releases every lock this open still holds.
  if (fd_ >= 0) ::close(fd_);
}

uint64_t RecordLocks::OffsetOf(const Text& name) {
  uint64_t hash = 0xcbf29ce484222325ull;
  for (const char16_t unit : name) {
    for (const unsigned byte : {unsigned(unit) & 0xFF, unsigned(unit) >> 8}) {
      hash ^= byte;
      hash *= 0x100000001b3ull;
    }
  }
  return hash >> 2;
}

bool RecordLocks::Lock(uint64_t offset, bool take) {
  struct flock range {};
  range.l_type = take ? F_WRLCK : F_UNLCK;
  range.l_whence = SEEK_SET;
  range.l_start = off_t(offset);
  range.l_len = 1;
  range.l_pid = 0;  // required by open file description locks
  while (::fcntl(fd_, F_OFD_SETLK, &range) != 0) {
    if (errno == EINTR) continue;
    if (take && (errno == EAGAIN || errno == EACCES)) return false;
    FailWithErrno(path_, take ? "cannot lock" : "cannot unlock");
  }
  return true;
}

bool RecordLocks::TryLock(const Text& name, const void* holder) {
  const auto held = holders_.find(name);
  if (held != holders_.end()) return held->second == holder;
  const uint64_t offset = OffsetOf(name);
  // Reserve the bookkeeping first, so that nothing can fail between taking the byte and
  // recording it.
  const auto slot = holders_.emplace(name, holder).first;
  int& users = bytes_[offset];
  try {
    if (users == 0 && !Lock(offset, true)) {
      bytes_.erase(offset);
      holders_.erase(slot);
      return false;
    }
  } catch (...) {
    bytes_.erase(offset);
    holders_.erase(slot);
    throw;
  }
  ++users;
  return true;
}

bool RecordLocks::Unlock(const Text& name, const void* holder) {
  const auto held = holders_.find(name);
  if (held == holders_.end() || held->second != holder) return false;
  const uint64_t offset = OffsetOf(name);
  holders_.erase(held);
  const auto byte = bytes_.find(offset);
  if (byte != bytes_.end() && --byte->second == 0) {
    bytes_.erase(byte);
    Lock(offset, false);
  }
  return true;
}

}  // namespace parcelon::refhost

#endif  // !_WIN32
