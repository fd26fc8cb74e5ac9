// The index of a list by record number: open addressing in one array of (record number,
// position) slots, so that a look-up reads one or two adjacent slots and no node per record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/ComBase.h"
#include "refhost/RecordStorage.h"

namespace parcelon::refhost {

class RecNumIndex {
 public:
  static constexpr size_t kNotFound = size_t(-1);

  // The position stored for `recNum`; kNotFound when there is none.
  size_t Find(LONG recNum) const {
    if (slots_.empty()) return kNotFound;
    for (size_t at = SlotOf(recNum);; at = (at + 1) & mask_) {
      const Slot& slot = slots_[at];
      if (slot.position == kEmpty) return kNotFound;
      if (slot.recNum == recNum) return slot.position;
    }
  }
  // Stores `position` for `recNum`; false, and nothing stored, when `recNum` has one already.
  bool Insert(LONG recNum, size_t position);
  // Makes room for `count` record numbers in all, so that adding them does not rehash.
  void Reserve(size_t count);

 private:
  static constexpr uint32_t kEmpty = UINT32_MAX;
  struct Slot {
    LONG recNum;
    uint32_t position;  // kEmpty for a free slot
  };

  // Fibonacci hashing: record numbers are mostly consecutive, and the multiplication spreads
  // any regular pattern of them (multiples of a power of two, say) over the whole table.
  size_t SlotOf(LONG recNum) const {
    return size_t((uint64_t(uint32_t(recNum)) * 0x9E3779B97F4A7C15ull) >> shift_);
  }
  void Rehash(size_t capacity);

  std::vector<Slot, RecordAllocator<Slot>> slots_;
  size_t mask_ = 0;
  unsigned shift_ = 64;
  size_t used_ = 0;
};

}  // namespace parcelon::refhost
