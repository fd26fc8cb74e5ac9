// The host object model: company file, lists, transactions, templates, attributes, data file
// records, the value objects and the host services that lead to them.
#pragma once

#include "host/Attributes.h"
#include "host/CompanyFile.h"
#include "host/DataFile.h"
#include "host/HostValues.h"
#include "host/LineItems.h"
#include "host/ListRecords.h"
#include "host/Lists.h"
#include "host/Services.h"
#include "host/Templates.h"
#include "host/Transactions.h"
