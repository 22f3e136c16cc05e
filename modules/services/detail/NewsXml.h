#pragma once

#include "tvk/errors/ErrorInfo.h"
#include "tvk/platform/CString.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/xml/XmlDocument.h"

/// The messages of the news service.
namespace tvk::services {

constexpr char HEADLINE_NOTICE[] = "headline";
constexpr char HEADLINE_SUBJECT[] = "all";

RefCountedPtr<KestrinMessage> documentRequest(int documentType, CString const & documentId);

/// The document in the field "xml", with a root. Null where there is none that can be read, and the
/// error filled with this component and ERR_XmlParsingError.
RefCountedPtr<XmlDocument> readXml(KestrinMessage const & message, int componentCode,
                                   ErrorInfo * error);

}  // namespace tvk::services
