// The reference host's services to an add-in: the application object that leads to the company
// file, the authentication tool, the inbox, the base64 coder, the feature settings, the folder,
// message box and file redirection services; and what they record for tests to read.
#pragma once

#include <memory>
#include <vector>

#include "host/HostServices.h"
#include "host/Services.h"
#include "refhost/ComObject.h"

namespace parcelon::refhost {

// A request that the inbox keeps: its identifier ("1", "2", ... in storing order), the name of
// the aggregate and the XML text.
struct InboxRequest {
  Text id;
  Text name;
  Text xml;
};

// A message box that the message box service showed.
struct ShownMessage {
  Text text;
  Text caption;
  LONG style = 0;
  bool ownedByMainWindow = false;
};

// What the services keep besides the company.
struct HostState {
  // False makes IAddInGoodies::GetCurrentCompanyFile fail, as when the host has no company open.
  bool companyOpen = true;
  std::vector<InboxRequest> inbox;
  LONG nextRequestId = 1;
  std::vector<ShownMessage> messages;
};
using HostStatePtr = std::shared_ptr<HostState>;

HRESULT NewApplication(const CompanyPtr& company, const HostStatePtr& state, ILXApplication** out);
HRESULT NewAuthTool(const CompanyPtr& company, INAAuthTool** out);
HRESULT NewInbox(const CompanyPtr& company, const HostStatePtr& state, ILXInbox** out);
HRESULT NewBase64Coder(const CompanyPtr& company, IBase64Coder** out);
// Answers from the component's feature settings (AmbitAccess).
HRESULT NewAmbitAccess(const CompanyPtr& company, IAmbitAccess** out);
// Gives the company's host.logFolder for kFolderKindLogs, an empty folder for the other kinds.
HRESULT NewFolderService(const CompanyPtr& company, IFolderService** out);
// Records each message in the state and returns at once.
HRESULT NewMessageBoxService(const CompanyPtr& company, const HostStatePtr& state,
                             IMessageBoxService** out);
// Keeps every path where it is named (MapPath gives the path itself).
HRESULT NewFileRedirectionService(const CompanyPtr& company, IFileRedirectionService** out);

}  // namespace parcelon::refhost
