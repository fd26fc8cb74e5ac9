// The lists of the reference host's company, with the names that fixtures and faults use for them.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace parcelon::refhost {

enum class ListKind {
  Terms,
  Names,
  Items,
  Classes,
  SalesReps,
  ShipMethods,
  CustomerMessages,
  Invoices,
  Estimates,
  Styles,
};

inline constexpr std::array<std::string_view, 10> kListNames = {
    "terms",    "names",     "items", "classes", "salesReps", "shipMethods", "customerMessages",
    "invoices", "estimates", "styles"};

inline constexpr std::string_view ListName(ListKind list) {
  return kListNames[static_cast<size_t>(list)];
}

// The list of a name; "customers" names the names list too, since customers and jobs are names.
inline constexpr std::optional<ListKind> ListFromName(std::string_view name) {
  if (name == "customers") return ListKind::Names;
  for (size_t i = 0; i < kListNames.size(); ++i)
    if (kListNames[i] == name) return static_cast<ListKind>(i);
  return std::nullopt;
}

}  // namespace parcelon::refhost
