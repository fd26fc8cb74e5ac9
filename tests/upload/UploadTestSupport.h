// The upload tests' setting: the forms tests' reference host and log, a clock fixed at a known
// time that records the waits instead of waiting, and the log prefixes of the upload.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "forms/FormParts.h"
#include "forms/FormsTestHost.h"
#include "upload/UploadClock.h"

namespace parcelon::test {

// A fixed time: 2023-11-14 22:13:20 UTC.
inline constexpr int64_t kNow = 1700000000;

// A clock standing at `now` that records each wait asked of it.
class FakeUploadClock final : public upload::UploadClock {
 public:
  int64_t Now() override { return now; }
  void SleepMilliseconds(uint32_t milliseconds) override { sleeps.push_back(milliseconds); }

  int64_t now = kNow;
  std::vector<uint32_t> sleeps;
};

// The record `recNum` of the list that `getList` gives.
template <class Record, class List>
ComPtr<Record> FindListRecord(const ICompanyFilePtr& company, HRESULT (STDMETHODCALLTYPE ILists::*getList)(List**),
                              LONG recNum) {
  IListsPtr lists;
  ComPtr<List> list;
  ComPtr<Record> record;
  EXPECT_EQ(S_OK, company->GetLists(lists.ReleaseAndGetAddressOf()));
  EXPECT_EQ(S_OK, (lists.Get()->*getList)(list.ReleaseAndGetAddressOf()));
  EXPECT_EQ(S_OK, list->GetItemByRecNum(forms::RecNumKey(recNum), record.ReleaseAndGetAddressOf()));
  return record;
}

#if PARCELON_HAVE_SQLITE
// A registered reference host of the company store at `path`, its log in `logFolder`, as a
// restart of the application opens it; null (and a failed expectation) when it cannot open.
inline std::unique_ptr<refhost::ReferenceHost> OpenStoreHost(const std::string& path, const std::string& logFolder) {
  HRESULT hr = S_OK;
  std::string error;
  std::unique_ptr<refhost::ReferenceHost> host = refhost::ReferenceHost::FromStore(path, hr, error);
  EXPECT_TRUE(host) << error;
  if (!host) return host;
  host->SetLogFolder(logFolder);
  EXPECT_EQ(S_OK, host->Register());
  return host;
}
#endif

class UploadTest : public FormsTest {
 protected:
  FakeUploadClock clock_;
  upload::ScopedUploadClock scopedClock_{clock_};
};

}  // namespace parcelon::test
