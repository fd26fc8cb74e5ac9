#include "clienttools/OLABuffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/ComBase.h"
#ifdef __linux__
#include <sys/mman.h>
#endif

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

bool AllocationMayGoOn() { return ++tAllocations != tFailingAllocation; }

#ifdef __linux__
// Blocks of a megabyte and more are mapped in whole huge pages: a large document then costs a
// page fault per 2 MiB instead of per 4 KiB, and grows with mremap, which moves the pages with
// their content instead of copying it (nothing stays behind in freed memory, nothing is touched
// twice). Whether a block is mapped follows from its size.
constexpr uint64_t kMappedBlock = uint64_t(1) << 20;
constexpr uint64_t kHugePage = uint64_t(2) << 20;

bool IsMapped(uint64_t size) { return size >= kMappedBlock; }
uint64_t MappedSize(uint64_t size) { return (size + kHugePage - 1) / kHugePage * kHugePage; }
#endif

// A new block of at least `size` bytes (`size` becomes its real size); null when memory is out.
char* NewBlock(uint64_t& size) {
  if (!AllocationMayGoOn()) return nullptr;
#ifdef __linux__
  if (IsMapped(size)) {
    size = MappedSize(size);
    void* block = mmap(nullptr, size_t(size), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) return nullptr;
    madvise(block, size_t(size), MADV_HUGEPAGE);
    return static_cast<char*>(block);
  }
#endif
  return static_cast<char*>(std::malloc(size_t(size)));
}

void FreeBlock(char* block, uint64_t size) {
#ifdef __linux__
  if (IsMapped(size)) {
    munmap(block, size_t(size));
    return;
  }
#endif
  (void)size;
  std::free(block);
}

// `block` grown to at least `size` bytes (`size` becomes its real size) with its first `length`
// bytes kept. A copy wipes the old block up to `written`, which then covers the content only;
// pages moved whole keep their high-water mark. Null, the old block untouched, when memory is out.
char* GrowBlock(char* block, uint64_t oldSize, uint64_t length, uint64_t& written, uint64_t& size) {
#ifdef __linux__
  if (IsMapped(oldSize)) {
    if (!AllocationMayGoOn()) return nullptr;
    size = MappedSize(size);
    void* moved = mremap(block, size_t(oldSize), size_t(size), MREMAP_MAYMOVE);
    return moved == MAP_FAILED ? nullptr : static_cast<char*>(moved);
  }
#endif
  // Not realloc: it would copy the whole old block and free it unwiped.
  char* fresh = NewBlock(size);
  if (!fresh) return nullptr;
  std::memcpy(fresh, block, size_t(length));
  Wipe(block, written);
  FreeBlock(block, oldSize);
  written = length;
  return fresh;
}
}  // namespace

void OLABuffer::FailAllocation(uint64_t n) { tFailingAllocation = n ? tAllocations + n : 0; }

uint64_t OLABuffer::AllocationCount() { return tAllocations; }

OLABuffer::OLABuffer(uint64_t initialSize, uint64_t growthStep)
    : growthStep_(growthStep ? growthStep : kDefaultStep) {
  uint64_t size = std::min(initialSize ? initialSize : growthStep_, MaxSize());
  data_ = NewBlock(size);
  if (data_) capacity_ = size;
}

OLABuffer::~OLABuffer() {
  if (!data_) return;
  Wipe(data_, written_);
  FreeBlock(data_, capacity_);
}

int32_t OLABuffer::EnsureCapacity(uint64_t needed) {
  if (needed <= capacity_ && data_) return kOk;
  if (needed > MaxSize()) return kTooLarge;
  const uint64_t shortfall = needed - std::min(needed, capacity_);
  uint64_t grown = std::min(MaxSize(), capacity_ + std::max({growthStep_, shortfall, capacity_}));
  // Only the content moves, and only what was ever written of the old block is wiped, so that
  // no page is touched in vain.
  char* fresh = data_ ? GrowBlock(data_, capacity_, length_, written_, grown) : NewBlock(grown);
  if (!fresh) return growthStep_ ? kGrowthFailed : kTooLarge;
  data_ = fresh;
  capacity_ = grown;
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
