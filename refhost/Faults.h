// Fault injection of the reference host: host operations that fail with a chosen HRESULT,
// interfaces that QueryInterface does not give, records that lookups by record number do not
// find, and data file record locks that someone else holds.
//
// Operations are named "Interface::Method" after the interface that declares the method, such as
// "IAddress::GetCity" or "ITerm2::GetIsDiscountEmpty". The methods that every list record has
// (those of IListElement) also answer to the record's own interface, so "ITerm::LockForEdit"
// picks the terms and "IListElement::LockForEdit" every list. A fault may be limited to the
// objects of one record: a list record, a transaction, or the values and children they give out
// (the address of name 12 belongs to record 12). Company-wide objects belong to record 0.
//
// When no fault is set every check is one test of a flag.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/ComBase.h"
#include "refhost/ListKind.h"

namespace parcelon::refhost {

// The name of an operation: whole ("IAddress::GetCity"), or an interface and a method joined only
// when a fault is set, with an optional second interface that also answers for the method (the
// record's own interface and "IListElement").
class OperationName {
 public:
  OperationName(const char* whole) : whole_(whole) {}
  OperationName(std::string_view whole) : whole_(whole) {}
  // The method of the host interface `interfaceId`.
  OperationName(const IID& interfaceId, std::string_view method,
                std::string_view alsoInterface = {})
      : interface_(&interfaceId), whole_(method), also_(alsoInterface) {}

  // "Interface::Method"; with the second interface's name for `also`.
  std::string Join(bool also = false) const;
  bool HasAlso() const { return !also_.empty(); }

 private:
  const IID* interface_ = nullptr;
  // The whole name, or the method when interface_ is set.
  std::string_view whole_;
  std::string_view also_;
};

// The IID of a host interface by its name ("ITerm2"); none for a name the host does not declare.
std::optional<IID> HostInterfaceByName(std::string_view name);
// The name of a host interface by its IID; "?" for an IID the host does not declare.
std::string_view HostInterfaceName(REFIID iid);

class Faults {
 public:
  // Makes `operation` fail with `hr` (a failure code) on the objects of `record`, or of every
  // record when `record` has no value. A fault for one record takes precedence over one for
  // every record; setting a fault again replaces it. False, and nothing set, when the interface
  // part of `operation` is not a host interface or `hr` is not a failure.
  bool Fail(std::string_view operation, HRESULT hr, std::optional<LONG> record = std::nullopt);
  // Makes QueryInterface for the host interface `name` fail with E_NOINTERFACE; false for a name
  // the host does not declare.
  bool MakeUnavailable(std::string_view interfaceName);
  // Makes lookups by record number in `list` behave as if `recNum` did not exist.
  void MakeAbsent(ListKind list, LONG recNum);
  // Runs `action` when `operation` is asked for the `call`-th time (from 1, whatever the record),
  // before the operation goes on: for tests that stop the process at a chosen point. False, and
  // nothing set, as Fail refuses an operation.
  bool Trap(std::string_view operation, int call, std::function<void()> action);
  // Makes the lock of the data file record `name` held by another process.
  void HoldLock(std::u16string_view dataFileRecordName);
  // Removes every fault.
  void Clear();

  // True when any fault is set.
  bool Active() const { return any_; }
  // The failure set for `operation` on the objects of `record`; S_OK when there is none.
  HRESULT Check(const OperationName& operation, LONG record) const {
    return any_ ? Find(operation, record) : S_OK;
  }
  bool IsUnavailable(REFIID iid) const { return any_ && FindUnavailable(iid); }
  bool IsAbsent(ListKind list, LONG recNum) const {
    return any_ && absent_.count({list, recNum}) != 0;
  }
  bool IsLockHeld(std::u16string_view dataFileRecordName) const {
    return any_ && heldLocks_.find(dataFileRecordName) != heldLocks_.end();
  }
  // How many calls a fault of `operation` (for any record) has failed so far.
  int Triggered(std::string_view operation) const;

 private:
  struct OperationFaults {
    std::optional<HRESULT> everyRecord;
    std::unordered_map<LONG, HRESULT> byRecord;
    int triggered = 0;
    std::function<void()> trap;
    int trapCall = 0;
    int calls = 0;
  };

  HRESULT Find(const OperationName& operation, LONG record) const;
  HRESULT FindOne(std::string_view operation, LONG record) const;
  bool FindUnavailable(REFIID iid) const;

  bool any_ = false;
  mutable std::map<std::string, OperationFaults, std::less<>> operations_;
  std::vector<IID> unavailable_;
  std::set<std::pair<ListKind, LONG>> absent_;
  std::set<std::u16string, std::less<>> heldLocks_;
};

}  // namespace parcelon::refhost
