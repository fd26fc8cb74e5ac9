// The index of a list by record number, kept at most half full so that probes stay short.
#include "refhost/RecNumIndex.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace parcelon::refhost {

bool RecNumIndex::Insert(LONG recNum, size_t position) {
  if (position >= kEmpty) throw std::length_error("too many records in one list");
  if ((used_ + 1) * 2 > slots_.size()) Rehash(std::max<size_t>(16, slots_.size() * 2));
  size_t at = SlotOf(recNum);
  for (; slots_[at].position != kEmpty; at = (at + 1) & mask_)
    if (slots_[at].recNum == recNum) return false;
  slots_[at] = {recNum, uint32_t(position)};
  ++used_;
  return true;
}

void RecNumIndex::Reserve(size_t count) {
  if (count * 2 > slots_.size()) Rehash(std::bit_ceil(count * 2));
}

void RecNumIndex::Rehash(size_t capacity) {
  std::vector<Slot, RecordAllocator<Slot>> old(capacity, Slot{0, kEmpty});
  old.swap(slots_);
  mask_ = capacity - 1;
  shift_ = 64u - unsigned(std::countr_zero(capacity));
  for (const Slot& slot : old) {
    if (slot.position == kEmpty) continue;
    size_t at = SlotOf(slot.recNum);
    while (slots_[at].position != kEmpty) at = (at + 1) & mask_;
    slots_[at] = slot;
  }
}

}  // namespace parcelon::refhost
