// Must not compile: each MALFORMED_* case is a GUID text with one defect.
#include "platform/ComBase.h"

#if defined(MALFORMED_DIGIT)
constexpr GUID kGuid = parcelon::GuidFromText("37A2FC00-1795-4679-94A3-A153F1A8BB5G");
#elif defined(MALFORMED_DASH)
constexpr GUID kGuid = parcelon::GuidFromText("37A2FC00-1795-4679-94A3_A153F1A8BB54");
#elif defined(MALFORMED_BRACE)
constexpr GUID kGuid = parcelon::GuidFromText("{37A2FC00-1795-4679-94A3-A153F1A8BB54)");
#elif defined(MALFORMED_LENGTH)
constexpr GUID kGuid = parcelon::GuidFromText("37A2FC00-1795-4679-94A3-A153F1A8BB5");
#else
constexpr GUID kGuid = parcelon::GuidFromText("37A2FC00-1795-4679-94A3-A153F1A8BB54");
#endif
