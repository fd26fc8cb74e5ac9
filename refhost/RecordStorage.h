// The allocator of a list's records and index: one contiguous block, on huge pages when large.
#pragma once

#include <cstddef>

namespace parcelon::refhost {

// A block of at least `bytes` for records; from kHugeBlockBytes up aligned to and advised to use
// huge pages (off Windows), so that filling a large list costs one page fault per 2 MiB rather
// than one per 4 KiB. Throws std::bad_alloc.
void* AllocateRecordBlock(size_t bytes);
// Frees a block of AllocateRecordBlock(`bytes`).
void FreeRecordBlock(void* block, size_t bytes) noexcept;

inline constexpr size_t kHugeBlockBytes = size_t(2) << 20;

template <class T>
struct RecordAllocator {
  using value_type = T;
  RecordAllocator() = default;
  template <class U>
  RecordAllocator(const RecordAllocator<U>&) {}
  T* allocate(size_t count) { return static_cast<T*>(AllocateRecordBlock(count * sizeof(T))); }
  void deallocate(T* block, size_t count) noexcept { FreeRecordBlock(block, count * sizeof(T)); }
  friend bool operator==(const RecordAllocator&, const RecordAllocator&) { return true; }
};

}  // namespace parcelon::refhost
