#include "clienttools/COLAConvert.h"

#include <cmath>

#include "platform/ComError.h"

namespace {

void MakeInvalid(OLAPrecisionInteger& value) {
  value.Assign(int32_t{0}, OLAPrecisionInteger::kInvalidScale);
}

bool IsTrue(VARIANT_BOOL flag) { return flag != VARIANT_FALSE; }

}  // namespace

bool COLAConvert::AmountFromHost(IAmount* amount, OLAAmount& value) {
  if (!amount) throw ComError(E_POINTER);
  const IID& iid = IidOf<IAmount>();
  MakeInvalid(value);
  VARIANT_BOOL empty = VARIANT_FALSE;
  ThrowIfFailed(amount->IsEmpty(&empty), &iid);
  if (IsTrue(empty)) return false;
  VARIANT_BOOL valid = VARIANT_FALSE;
  ThrowIfFailed(amount->IsValid(&valid), &iid);
  if (!IsTrue(valid)) return false;
  LONGLONG whole = 0;
  ThrowIfFailed(amount->GetWhole(&whole), &iid);
  LONG hundredths = 0;
  ThrowIfFailed(amount->GetHundredths(&hundredths), &iid);
  VARIANT_BOOL negative = VARIANT_FALSE;
  ThrowIfFailed(amount->IsNegative(&negative), &iid);
  value = OLAAmount(int64_t{whole}, int32_t{hundredths});
  if (IsTrue(negative)) value.Negate();
  return true;
}

bool COLAConvert::PercentFromHost(IPercent* percent, OLAPercent& value) {
  if (!percent) throw ComError(E_POINTER);
  const IID& iid = IidOf<IPercent>();
  MakeInvalid(value);
  VARIANT_BOOL empty = VARIANT_FALSE;
  ThrowIfFailed(percent->IsEmpty(&empty), &iid);
  if (IsTrue(empty)) return false;
  double number = 0;
  ThrowIfFailed(percent->GetValue(&number), &iid);
  // Truncation towards minus infinity at the fifth decimal, deliberately not rounding.
  double scaled = std::floor(number * 100000.0);
  // Only a value strictly inside the 64-bit range converts without undefined behaviour; NaN
  // fails both tests.
  if (!(scaled >= -9223372036854775808.0 && scaled < 9223372036854775808.0)) return false;
  value = OLAPercent(int64_t(scaled), 5);
  return true;
}

bool COLAConvert::QuantityFromHost(IQuantity* quantity, OLAPrecisionInteger& value) {
  if (!quantity) throw ComError(E_POINTER);
  const IID& iid = IidOf<IQuantity>();
  MakeInvalid(value);
  VARIANT_BOOL empty = VARIANT_FALSE;
  ThrowIfFailed(quantity->IsEmpty(&empty), &iid);
  if (IsTrue(empty)) return false;
  VARIANT_BOOL valid = VARIANT_FALSE;
  ThrowIfFailed(quantity->IsValid(&valid), &iid);
  if (!IsTrue(valid)) return false;
  LONGLONG integer = 0;
  ThrowIfFailed(quantity->GetInteger(&integer), &iid);
  SHORT decimals = 0;
  ThrowIfFailed(quantity->GetDecimals(&decimals), &iid);
  VARIANT_BOOL negative = VARIANT_FALSE;
  ThrowIfFailed(quantity->IsNegative(&negative), &iid);
  if (decimals < 0 || decimals > OLAPrecisionInteger::kMaxScale) return false;
  value.Assign(int64_t{integer}, uint16_t(decimals));
  if (IsTrue(negative)) value.Negate();
  return true;
}
