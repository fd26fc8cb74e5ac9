// The send driver's simulated gateway answers with other statuses than "0": how the session
// takes them, pass by pass, with the transcript's last lines and the log.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "component/SampleSendTest.h"
#include "response/ResponseCodes.h"
#include "upload/UploadState.h"

namespace parcelon::test {
namespace {

class GatewayAnswersTest : public SampleSendTest {
 protected:
  // Runs the e-mailed estimate 2001 with Post (an attachment pass, then a form pass with an
  // upload) answered with `responses`; returns the send's result and keeps the transcript.
  HRESULT Send(const std::vector<std::string>& responses) {
    tools::SendSpec plan;
    tools::FormSpec form = SampleForm(naftESTIMATE, 2001, nastEMAIL);
    form.post = true;
    plan.forms = {form};
    plan.responses = responses;
    transcript_.clear();
    return tools::RunSend(plan, transcript_);
  }

  std::string Tail(size_t lines) const {
    size_t at = transcript_.size();
    for (size_t i = 0; i <= lines && at != std::string::npos && at > 0; ++i) at = transcript_.rfind('\n', at - 1);
    return at == std::string::npos ? transcript_ : transcript_.substr(at + 1);
  }

  std::string StoredToken() {
    OLAString token;
    EXPECT_EQ(S_OK, upload::RetrieveLastDataUploadToken(&token));
    return token.GetText();
  }

  std::string transcript_;
};

TEST_F(GatewayAnswersTest, AnExpiredTicketEndsTheSendAfterTheAttachment) {
  EXPECT_EQ(kTicketExpired, Send({"13109"}));
  EXPECT_EQ("response document:\n"
            "<AttachmentRs statusCode=\"13109\" statusSeverity=\"ERROR\"><MessageID>ATT000001</MessageID></AttachmentRs>\n"
            "ParseResponse(AttachmentRs): 0x8004910A\n"
            "ParseResponse failed: 0x8004910A\n",
            Tail(4));
  EXPECT_EQ(std::vector<std::string>{Entry("Parcelon:CNA_Forms::ParseResponse: ", "Ticket expired. ", "0x8004910a")},
            LogEntries());
}

TEST_F(GatewayAnswersTest, ARefusedAttachmentEndsTheSendWithoutALogLine) {
  EXPECT_EQ(kAttachmentRefused, Send({"13102"}));
  EXPECT_EQ("ParseResponse failed: 0x80049109\n", Tail(1));
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

// A failure status on the upload: the send goes on, the upload is not accepted; the token the
// answer carries is still the one to send next time.
TEST_F(GatewayAnswersTest, AnUploadAnsweredWithAFailureIsNotAccepted) {
  EXPECT_EQ(S_OK, Send({"0", "3000"}));
  EXPECT_EQ("<LXDataMsgsRs><DataUploadRs statusCode=\"3000\" statusSeverity=\"ERROR\">"
            "<LastDataUploadToken>TOKEN-0001</LastDataUploadToken></DataUploadRs></LXDataMsgsRs>\n"
            "ParseResponse(LXDataMsgsRs): 0x00000000\n== done\n",
            Tail(3));
  EXPECT_EQ("TOKEN-0001", StoredToken());
  EXPECT_EQ(1u, Host().InboxRequests().size());
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

// A status that is no text for an attribute still makes a well-formed document.
TEST_F(GatewayAnswersTest, TheStatusIsEscaped) {
  EXPECT_EQ(S_OK, Send({"<&\">"}));
  EXPECT_NE(std::string::npos, transcript_.find("<AttachmentRs statusCode=\"&lt;&amp;&quot;&gt;\""));
}

}  // namespace
}  // namespace parcelon::test
