#include "modules/services/detail/NewsXml.h"

#include "modules/expat/ExpatXmlParser.h"
#include "modules/services/detail/Messages.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/NumberData.h"

namespace tvk::services {

namespace {

constexpr char DOCUMENT_REQUEST[] = "newsDocument";
constexpr char XML_FIELD[] = "xml";

/// Puts blanks in the place of the declaration at the start: the encoding that it names is that of
/// some file, while the document came as text and is now UTF-8. Line ends stay, so that positions in
/// errors stay too.
void blankDeclaration(CString & xml) {
    constexpr char START[] = "<?xml";
    constexpr int LENGTH = sizeof START - 1;
    int const end = xml.Find("?>");
    bool const isThere = xml.Left(LENGTH) == START && xml.GetLength() > LENGTH &&
                         static_cast<unsigned char>(xml[LENGTH]) <= ' ' && end != -1;
    for (int place = 0; isThere && place < end + 2; ++place) {
        if (xml[place] != '\n' && xml[place] != '\r') {
            xml.SetAt(place, ' ');
        }
    }
}

CString inUtf8(CString const & text) {
    return platform::ansiToUtf8(text.GetString(), static_cast<unsigned int>(text.GetLength()));
}

}  // namespace

RefCountedPtr<KestrinMessage> documentRequest(int documentType, CString const & documentId) {
    RefCountedPtr<KestrinMessage> request = requestOfType(DOCUMENT_REQUEST);
    request->setFieldValue("documentType", new NumberData(documentType));
    request->setFieldValue("documentId", documentId);
    return request;
}

RefCountedPtr<XmlDocument> readXml(KestrinMessage const & message, int componentCode,
                                   ErrorInfo * error) {
    MessageReader const reader(message, componentCode, KestrinConstants::ERR_XmlParsingError,
                               error);
    CString text;
    if (!reader.readText(XML_FIELD, &text)) {
        return nullptr;
    }
    CString xml = inUtf8(text);
    blankDeclaration(xml);
    ErrorInfo failure;
    RefCountedPtr<XmlDocument> document = ExpatXmlParser().parse(
        xml.GetString(), static_cast<unsigned int>(xml.GetLength()), &failure);
    if (document.isNull()) {
        reader.refuse(XML_FIELD, "cannot be read: " + failure.getErrorMessage());
    }
    return document;
}

}  // namespace tvk::services
