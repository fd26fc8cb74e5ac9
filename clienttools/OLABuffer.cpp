#include "clienttools/OLABuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/ComBase.h"

namespace {
constexpr uint64_t kDefaultStep = 512;
constexpr size_t kLargePiece = 16384;

// Zeroes memory in a way the optimiser may not drop: the buffer holds customer data.
void Wipe(char* data, uint64_t size) {
  if (!data || size == 0) return;
#ifdef _WIN32
  SecureZeroMemory(data, size_t(size));
#else
  explicit_bzero(data, size_t(size));
#endif
}

// The fault injection of the tests: allocations counted, and the one that is to fail.
thread_local uint64_t tAllocations = 0;
thread_local uint64_t tFailingAllocation = 0;

char* AllocateBlock(uint64_t size) {
  if (++tAllocations == tFailingAllocation) return nullptr;
  return static_cast<char*>(std::malloc(size_t(size)));
}
}  // namespace

void OLABuffer::FailAllocation(uint64_t n) { tFailingAllocation = n ? tAllocations + n : 0; }

uint64_t OLABuffer::AllocationCount() { return tAllocations; }

OLABuffer::OLABuffer(uint64_t initialSize, uint64_t growthStep)
    : growthStep_(growthStep ? growthStep : kDefaultStep) {
  uint64_t size = initialSize ? initialSize : growthStep_;
  size = std::min(size, MaxSize());
  data_ = AllocateBlock(size);
  if (data_) capacity_ = size;
}

OLABuffer::~OLABuffer() {
  Wipe(data_, written_);
  std::free(data_);
}

int32_t OLABuffer::EnsureCapacity(uint64_t needed) {
  if (needed <= capacity_ && data_) return kOk;
  if (needed > MaxSize()) return kTooLarge;
  const uint64_t shortfall = needed - std::min(needed, capacity_);
  const uint64_t grown = std::min(MaxSize(), capacity_ + std::max({growthStep_, shortfall, capacity_}));
  // Not realloc: it would copy the whole old block and free it unwiped. Only the content moves,
  // and only what was ever written of the old block is wiped, so no page is touched in vain.
  char* fresh = AllocateBlock(grown);
  if (!fresh) return growthStep_ ? kGrowthFailed : kTooLarge;
  if (data_) {
    std::memcpy(fresh, data_, length_);
    Wipe(data_, written_);
    std::free(data_);
  }
  data_ = fresh;
  capacity_ = grown;
  written_ = length_;
  return kOk;
}

int32_t OLABuffer::Reserve(uint64_t total) { return EnsureCapacity(total); }

int32_t OLABuffer::Append(const void* bytes, size_t count) {
  if (count == 0) return kOk;
  if (!bytes) return kNoData;
  const uint64_t end = uint64_t(position_) + count;
  if (end > MaxSize()) return kTooLarge;
  // The bytes may be part of this buffer (CopyRange into itself), and growth moves the block:
  // keep their offset, not their address.
  const auto source = reinterpret_cast<uintptr_t>(bytes);
  const auto block = reinterpret_cast<uintptr_t>(data_);
  const bool inside = data_ && source >= block && source < block + capacity_;
  if (const int32_t rc = EnsureCapacity(end); rc != kOk) return rc;
  const char* from = inside ? data_ + (source - block) : static_cast<const char*>(bytes);
  std::memmove(data_ + position_, from, count);
  CommitTail(count);
  return kOk;
}

int32_t OLABuffer::AppendLarge(const void* bytes, size_t count) {
  const auto* cursor = static_cast<const char*>(bytes);
  while (count > 0) {
    const size_t piece = std::min(count, kLargePiece);
    if (const int32_t rc = Append(cursor, piece); rc != kOk) return rc;
    cursor += piece;
    count -= piece;
  }
  return kOk;
}

int32_t OLABuffer::AppendChar(char c) { return Append(&c, 1); }

int32_t OLABuffer::AppendString(const char* text) { return text ? Append(text, std::strlen(text)) : kOk; }

int32_t OLABuffer::CopyRange(OLABuffer& target, uint32_t start, uint32_t count) const {
  if (!data_) return kNoData;
  if (uint64_t(start) + count > length_) return kTooLarge;
  return target.Append(data_ + start, count);
}

int32_t OLABuffer::Read(void* out, uint32_t count) {
  if (!data_) return kNoData;
  if (uint64_t(position_) + count > length_) return kTooLarge;
  std::memcpy(out, data_ + position_, count);
  position_ += count;
  return kOk;
}

int32_t OLABuffer::SetPosition(uint32_t position) {
  if (position > length_) return kTooLarge;
  position_ = position;
  return kOk;
}

int32_t OLABuffer::SetLength(uint32_t length) {
  if (length == 0) length = position_;
  if (length > capacity_) return kTooLarge;
  length_ = length;
  position_ = std::min(position_, length_);
  written_ = std::max<uint64_t>(written_, length_);
  return kOk;
}

void OLABuffer::Clear(char fill) {
  if (data_) std::memset(data_, fill, size_t(written_));
  length_ = position_ = 0;
}

bool OLABuffer::Equals(const OLABuffer& other) const {
  return length_ == other.length_ && (length_ == 0 || std::memcmp(data_, other.data_, length_) == 0);
}
