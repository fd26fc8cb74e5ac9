#include "upload/UploadClock.h"

#include <chrono>
#include <ctime>
#include <thread>

namespace parcelon::upload {
namespace {

class SystemClock final : public UploadClock {
 public:
  int64_t Now() override { return int64_t(std::time(nullptr)); }
  void SleepMilliseconds(uint32_t milliseconds) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
};

SystemClock systemClock;
UploadClock* currentClock = &systemClock;

}  // namespace

UploadClock& CurrentUploadClock() { return *currentClock; }

ScopedUploadClock::ScopedUploadClock(UploadClock& clock) : previous_(currentClock) {
  currentClock = &clock;
}

ScopedUploadClock::~ScopedUploadClock() { currentClock = previous_; }

}  // namespace parcelon::upload
