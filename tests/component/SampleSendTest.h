// Whole sends of the sample company: its fixture as the reference host, the gateway addresses in
// the settings file and the component's classes registered.
#pragma once

#include <optional>
#include <string>

#include "component/ClassObjects.h"
#include "forms/FormsTestHost.h"
#include "support/SampleForms.h"
#include "tools/SendDriver.h"

namespace parcelon::test {

inline const std::string kSources = PARCELON_SOURCE_DIR;

class SampleSendTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    UseCompany(ReadFile(kSources + "/samples/sample-company.json"));
    WriteSettings(
        "[URLs]\nEmailService.FormGatewayURL=https://forms.gateway.example/lxn/forms\n"
        "EmailService.FormGatewayAttachURL=https://forms.gateway.example/lxn/attachments\n");
    classes_.emplace();
    ASSERT_EQ(S_OK, classes_->Result());
  }
  void TearDown() override {
    classes_.reset();
    FormsTest::TearDown();
  }

  std::optional<ClassObjectRegistration> classes_;
};

}  // namespace parcelon::test
