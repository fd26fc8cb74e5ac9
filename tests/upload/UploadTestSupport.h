// The upload tests' setting: the forms tests' reference host and log, a clock fixed at a known
// time that records the waits instead of waiting, and the log prefixes of the upload.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "forms/FormsTestHost.h"
#include "upload/UploadClock.h"

namespace parcelon::test {

// A fixed time: 2023-11-14 22:13:20 UTC.
inline constexpr int64_t kNow = 1700000000;

// A clock standing at `now` that records each wait asked of it.
class FakeUploadClock final : public upload::UploadClock {
 public:
  int64_t Now() override { return now; }
  void SleepMilliseconds(uint32_t milliseconds) override { sleeps.push_back(milliseconds); }

  int64_t now = kNow;
  std::vector<uint32_t> sleeps;
};

class UploadTest : public FormsTest {
 protected:
  FakeUploadClock clock_;
  upload::ScopedUploadClock scopedClock_{clock_};
};

}  // namespace parcelon::test
