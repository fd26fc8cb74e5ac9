// The component's tests: the classes registered in the process's class table, a session created
// as the network adapter creates it, the log (with its method prefixes) in a scratch folder, and
// the gateway addresses in the settings file.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "component/ClassObjects.h"
#include "interfaces/ParcelonInterfaces.h"
#include "diagnostics/FakeHost.h"
#include "platform/Bstr.h"
#include "platform/ComPtr.h"

namespace parcelon::test {

inline constexpr const char* kGatewayURL = "https://forms.example/gateway";
inline constexpr const char* kAttachURL = "https://forms.example/attach";

// The text of a BSTR that the component gave out, which the test frees; nullopt for a null BSTR.
inline std::optional<std::string> TakeText(BSTR text) {
  const Bstr owned = Bstr::Attach(text);
  if (!owned.Get()) return std::nullopt;
  return ToAnsi(owned.Get());
}

// As TakeText, with a null BSTR read as empty.
inline std::string Take(BSTR text) { return TakeText(text).value_or(""); }

// A log entry of the session's `method` (with the method prefix, which the tests turn on).
inline std::string SessionEntry(const std::string& method, const std::string& message,
                                const std::string& hresult) {
  return "Parcelon:CNA_Forms::" + method + ": " + message + "  HRESULT=" + hresult;
}

// A form's delivery properties for a test.
struct FormSetup {
  NASendType method = nastEMAIL;
  NAFormType type = naftINVOICE;
  VARIANT_BOOL synchMultiple = VARIANT_FALSE;
};

class ComponentTest : public DiagnosticsTest {
 protected:
  void SetUp() override {
    DiagnosticsTest::SetUp();
    WriteSettings(std::string("[ZPSSettings]\nNetworkAdapter.EnableLogContext=1\n[URLs]\n") +
                  "EmailService.FormGatewayURL=" + kGatewayURL + "\n" +
                  "EmailService.FormGatewayAttachURL=" + kAttachURL + "\n");
    registration_.emplace();
    ASSERT_EQ(S_OK, registration_->Result());
    session_ = NewSession();
    ASSERT_TRUE(session_);
    ASSERT_EQ(S_OK, session_.As(base_));
  }

  void TearDown() override {
    base_.Reset();
    session_.Reset();
    registration_.reset();
    DiagnosticsTest::TearDown();
  }

  static ComPtr<INA_Forms2> NewSession() {
    ComPtr<INA_Forms2> session;
    EXPECT_EQ(S_OK, CoCreateInstance(CLSID_NA_Forms, nullptr, CLSCTX_INPROC_SERVER,
                                     IidOf<INA_Forms2>(), session.ReleaseAndGetVoidAddress()));
    return session;
  }

  // Adds a form to the session and sets its send method, type and SynchMultiple.
  ComPtr<INA_Form7> AddForm(const FormSetup& setup) {
    ComPtr<INA_Form> added;
    EXPECT_EQ(S_OK, session_->AddForm(added.ReleaseAndGetAddressOf()));
    ComPtr<INA_Form7> form;
    EXPECT_EQ(S_OK, added.As(form));
    EXPECT_EQ(S_OK, form->put_SendMethod(setup.method));
    EXPECT_EQ(S_OK, form->put_FormType(setup.type));
    EXPECT_EQ(S_OK, form->put_SynchMultiple(setup.synchMultiple));
    return form;
  }
  ComPtr<INA_Form7> AddForm(NASendType method, NAFormType type = naftINVOICE) {
    FormSetup setup;
    setup.method = method;
    setup.type = type;
    return AddForm(setup);
  }

  // The send state as the adapter sees it: 3 when no further pass is needed, else 1 or 2 by the
  // request header lines of the pass ("final: false" or "final: true"), else 0 (not started).
  int ObservedState() {
    VARIANT_BOOL again = VARIANT_FALSE;
    EXPECT_EQ(S_OK, base_->get_IsAnotherSynchNeeded(&again));
    if (again == VARIANT_FALSE) return 3;
    BSTR headers = nullptr;
    EXPECT_EQ(S_OK, base_->get_RequestHeaderParams(&headers));
    const std::optional<std::string> text = TakeText(headers);
    if (!text) return 0;
    if (text->find("final: false\r\n") != std::string::npos) return 1;
    if (*text == "final: true\r\n") return 2;
    ADD_FAILURE() << "unexpected header lines: " << *text;
    return -1;
  }

  // The e-mail parameters of the pass's form in the order get_TxEParams gives them (subject,
  // reply address, text, to, cc, bcc, attachments), nullopt for a null text.
  std::vector<std::optional<std::string>> TxEParams() {
    BSTR out[7] = {};
    EXPECT_EQ(S_OK,
              base_->get_TxEParams(&out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &out[6]));
    std::vector<std::optional<std::string>> texts;
    for (BSTR text : out) texts.push_back(TakeText(text));
    return texts;
  }

  // The attachment pass's response header "Set-Cookie" with `value`.
  HRESULT SetCookie(const std::string& value) {
    return base_->SetResponseHeaderParamValue(MakeBstr("Set-Cookie").Get(), MakeBstr(value).Get());
  }

  std::optional<ClassObjectRegistration> registration_;
  ComPtr<INA_Forms2> session_;
  ComPtr<INA_Base5> base_;
};

}  // namespace parcelon::test
