// The allocator of a list's records. On a virtual machine the first touch of every fresh page
// is dear; a list of a hundred thousand names fills some 150 MB, so its block takes huge pages.
#include "refhost/RecordStorage.h"

#include <cstdlib>
#include <new>

#if !defined(_WIN32)
#include <sys/mman.h>
#endif

namespace parcelon::refhost {

void* AllocateRecordBlock(size_t bytes) {
#if !defined(_WIN32)
  if (bytes >= kHugeBlockBytes) {
    const size_t rounded = (bytes + kHugeBlockBytes - 1) / kHugeBlockBytes * kHugeBlockBytes;
    void* block = std::aligned_alloc(kHugeBlockBytes, rounded);
    if (!block) throw std::bad_alloc();
    madvise(block, rounded, MADV_HUGEPAGE);  // advice only: without it the block still works
    return block;
  }
#endif
  return ::operator new(bytes);
}

void FreeRecordBlock(void* block, [[maybe_unused]] size_t bytes) noexcept {
#if !defined(_WIN32)
  if (bytes >= kHugeBlockBytes) return std::free(block);
#endif
  ::operator delete(block);
}

}  // namespace parcelon::refhost
