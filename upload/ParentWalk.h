// The bounded walk up a list record's parents (customers and jobs, items), shared by the selection
// and the change scan.
#pragma once

#include <algorithm>

#include "diagnostics/LogIfFailed.h"
#include "host/HostModel.h"

namespace parcelon::upload {

// The most parents a record of the host's trees can have.
inline constexpr int kMaxTreeDepth = 63;

inline constexpr char kCustomerJobCycle[] =
    "The parents of a customerjob in LX lead back to it or nest deeper than a tree can.";

// Calls `visit(recNum)` for each parent of `record` (whose own number is `recNum`) with a nonzero
// record number, nearest first. A parent that cannot be read, is absent or numbered 0 ends the
// walk silently. Parents that lead back to a record already passed, or more than kMaxTreeDepth
// of them, end it with E_FAIL and `cycle` logged under `prefix`.
template <class Record, class Visit>
HRESULT WalkParents(const ComPtr<Record>& record, LONG recNum, const char* prefix, Visit visit,
                    const char* cycle = kCustomerJobCycle) {
  LONG chain[kMaxTreeDepth + 1] = {recNum};
  int length = 1;
  ComPtr<Record> current = record;
  while (true) {
    ComPtr<Record> parent;
    LONG parentRecNum = 0;
    if (FAILED(current->GetParent(parent.ReleaseAndGetAddressOf())) || !parent ||
        FAILED(parent->GetRecNum(&parentRecNum)) || parentRecNum == 0)
      return S_OK;
    if (length > kMaxTreeDepth || std::find(chain, chain + length, parentRecNum) != chain + length)
      RETURN_HR_LOG(E_FAIL, prefix, cycle);
    chain[length++] = parentRecNum;
    visit(parentRecNum);
    current = parent;
  }
}

}  // namespace parcelon::upload
