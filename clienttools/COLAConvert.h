// COLAConvert: turns the host's amount, percent and quantity objects into exact decimals.
#pragma once

#include "clienttools/OLAPrecisionInteger.h"
#include "host/HostValues.h"

// Every operation reads the host object and fills `value`. A failing host call throws
// ComError with its HRESULT and the host interface's IID; a null object throws
// ComError(E_POINTER). They return false, with `value` invalid (kInvalidScale), when the host
// says the object is empty or not valid, and true otherwise.
class COLAConvert {
 public:
  // whole * 100 + hundredths with scale 2, negated when the host says the amount is negative.
  bool AmountFromHost(IAmount* amount, OLAAmount& value);
  // floor(percent * 100000.0) with scale 5: 8.25 gives 825000, 0.000009 gives 0. A value whose
  // floor is not a finite 64-bit integer gives the invalid value and false.
  bool PercentFromHost(IPercent* percent, OLAPercent& value);
  // The host's integer with its number of decimals as the scale, negated when the host says the
  // quantity is negative. A number of decimals outside 0..29 gives the invalid value and false.
  bool QuantityFromHost(IQuantity* quantity, OLAPrecisionInteger& value);
};
