#include "clienttools/TrnUID.h"

#include <atomic>
#include <chrono>
#include <ratio>

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace {

uint32_t CurrentProcessId() {
#ifdef _WIN32
  return uint32_t(_getpid());
#else
  return uint32_t(getpid());
#endif
}

using Ticks = std::chrono::duration<int64_t, std::ratio<1, 10000000>>;

}  // namespace

OLAString FormatTrnUID(uint64_t ticks, uint32_t processId, uint32_t sequence) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  const uint64_t halves[2] = {ticks, (uint64_t(processId) << 32) | sequence};
  char text[kTrnUIDLength + 1];
  char* out = text;
  for (int digit = 0; digit < 32; ++digit) {
    if (digit > 0 && digit % 4 == 0) *out++ = '-';
    const int shift = (15 - digit % 16) * 4;
    *out++ = kHex[(halves[digit / 16] >> shift) & 0xF];
  }
  *out = '\0';
  return OLAString(text, size_t(out - text));
}

OLAString NewTrnUID() {
  // Each call takes its own number, so two calls of one process never share an identifier.
  static std::atomic<uint32_t> sequence{0};
  const uint32_t next = sequence.fetch_add(1, std::memory_order_relaxed);
  const auto ticks = std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch());
  return FormatTrnUID(uint64_t(ticks.count()), CurrentProcessId(), next);
}
