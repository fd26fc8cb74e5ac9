// The upload's clock: "now" in seconds since 1970 and the waits between lock tries, behind a seam
// that tests replace so that they run at fixed times and without waiting.
#pragma once

#include <cstdint>

namespace parcelon::upload {

class UploadClock {
 public:
  virtual ~UploadClock() = default;
  // Seconds since 1970.
  virtual int64_t Now() = 0;
  virtual void SleepMilliseconds(uint32_t milliseconds) = 0;
};

// The clock in use: the system's, unless a ScopedUploadClock replaces it.
UploadClock& CurrentUploadClock();

// Makes `clock` the clock in use for the scope; restores the previous one after.
class ScopedUploadClock {
 public:
  explicit ScopedUploadClock(UploadClock& clock);
  ~ScopedUploadClock();
  ScopedUploadClock(const ScopedUploadClock&) = delete;
  ScopedUploadClock& operator=(const ScopedUploadClock&) = delete;

 private:
  UploadClock* previous_;
};

}  // namespace parcelon::upload
