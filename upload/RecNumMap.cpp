#include "upload/RecNumMap.h"

uint32_t* CRecNumMap::Find(RecordKind kind, int64_t recNum) {
  const auto found = Of(kind).find(recNum);
  return found == Of(kind).end() ? nullptr : &found->second;
}

const uint32_t* CRecNumMap::Find(RecordKind kind, int64_t recNum) const {
  return const_cast<CRecNumMap*>(this)->Find(kind, recNum);
}

void CRecNumMap::Clear() {
  for (Marks& marks : maps_) marks.clear();
}

size_t CRecNumMap::Size() const {
  size_t size = 0;
  for (const Marks& marks : maps_) size += marks.size();
  return size;
}
