#include "modules/expat/ExpatXmlParser.h"

#include "modules/expat/detail/DocumentReader.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

namespace {

void report(ErrorInfo * error, CString const & message) {
    if (error != nullptr) {
        error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
        error->setErrorCode(KestrinConstants::ERR_XmlParsingError);
        error->setErrorMessage(message);
    }
}

}  // namespace

ExpatXmlParser::~ExpatXmlParser() = default;

bool ExpatXmlParser::parseBuffer(void const * data, unsigned int size, ErrorInfo * error) {
    document_ = nullptr;
    expat::DocumentReader reader;
    if (!reader.read(data, size)) {
        report(error, reader.failure());
        return false;
    }
    document_ = new XmlDocument;
    document_->setRootElement(reader.root());
    return true;
}

RefCountedPtr<XmlDocument> ExpatXmlParser::getDocument(ErrorInfo * error) {
    if (document_.isNull()) {
        report(error, "no XML document was parsed");
    }
    return document_;
}

}  // namespace tvk
