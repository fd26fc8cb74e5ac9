// Reading the reference host's objects in tests: what a getter gives (its status checked), and
// a host amount seen through every one of its getters.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <utility>

#include "host/HostModel.h"
#include "platform/Bstr.h"
#include "platform/ComPtr.h"
#include "refhost/Text.h"

namespace parcelon::refhost::test {

namespace detail {

// What `call(Out*)` gives, as Get describes it.
template <class Out, class Call>
auto Receive(Call&& call) {
  if constexpr (std::is_same_v<Out, BSTR>) {
    Bstr text;
    EXPECT_EQ(S_OK, call(text.Out()));
    return TextToUtf8(FromBstr(text.Get()));
  } else if constexpr (std::is_same_v<Out, VARIANT_BOOL>) {
    VARIANT_BOOL flag = 1;
    EXPECT_EQ(S_OK, call(&flag));
    EXPECT_TRUE(flag == VARIANT_TRUE || flag == VARIANT_FALSE) << flag;
    return flag == VARIANT_TRUE;
  } else if constexpr (std::is_pointer_v<Out>) {
    using I = std::remove_pointer_t<Out>;
    I* result = nullptr;
    EXPECT_EQ(S_OK, call(&result));
    return ComPtr<I>::Attach(result);
  } else {
    Out value{};
    EXPECT_EQ(S_OK, call(&value));
    return value;
  }
}

}  // namespace detail

// What `getter` of `object` gives; the test fails when the call does. Texts come as UTF-8,
// VARIANT_BOOLs as bool (and must be VARIANT_TRUE or VARIANT_FALSE), interfaces as ComPtr.
template <class Object, class Base, class Out>
auto Get(const ComPtr<Object>& object, HRESULT (STDMETHODCALLTYPE Base::*getter)(Out*)) {
  static_assert(std::is_base_of_v<Base, Object>);
  return detail::Receive<Out>([&](Out* out) { return (object.Get()->*getter)(out); });
}

// The same for a getter that takes an index first.
template <class Object, class Base, class Out>
auto Get(const ComPtr<Object>& object, HRESULT (STDMETHODCALLTYPE Base::*getter)(LONG, Out*),
         LONG index) {
  static_assert(std::is_base_of_v<Base, Object>);
  return detail::Receive<Out>([&](Out* out) { return (object.Get()->*getter)(index, out); });
}

// A host amount as every getter of IAmount and IAmount2 sees it.
struct AmountSeen {
  std::string text;
  bool empty = true;
  bool negative = false;
  LONGLONG whole = 0;
  LONG hundredths = 0;
  double asDouble = 0;

  friend bool operator==(const AmountSeen&, const AmountSeen&) = default;
  friend std::ostream& operator<<(std::ostream& out, const AmountSeen& a) {
    return out << "{\"" << a.text << "\" empty " << a.empty << " negative " << a.negative
               << " whole " << a.whole << " hundredths " << a.hundredths << " double "
               << a.asDouble << "}";
  }
};

// The amount that an amount getter gives; the amount must also answer for IAmount2.
inline AmountSeen SeeAmount(const ComPtr<IAmount>& amount) {
  AmountSeen seen;
  if (!amount) {
    ADD_FAILURE() << "no amount";
    return seen;
  }
  EXPECT_EQ(S_OK, amount->Prepare(-1));
  seen.text = Get(amount, &IAmount::GetText);
  seen.empty = Get(amount, &IAmount::IsEmpty);
  seen.negative = Get(amount, &IAmount::IsNegative);
  seen.whole = Get(amount, &IAmount::GetWhole);
  seen.hundredths = Get(amount, &IAmount::GetHundredths);
  ComPtr<IAmount2> amount2;
  EXPECT_EQ(S_OK, amount.As(amount2));
  if (amount2) seen.asDouble = Get(amount2, &IAmount2::GetDouble);
  return seen;
}

// The amount a fixture writes as `text` ("-25.00"); an empty text is the empty amount.
inline AmountSeen Money(const std::string& text, bool negative, LONGLONG whole, LONG hundredths) {
  const double magnitude = double(whole * 100 + hundredths) / 100;
  return {text, text.empty(), negative, whole, hundredths, negative ? -magnitude : magnitude};
}

// The empty amount: an amount that is not set.
inline AmountSeen EmptyAmount() { return Money("", false, 0, 0); }

}  // namespace parcelon::refhost::test
