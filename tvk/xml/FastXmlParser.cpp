#include "tvk/xml/FastXmlParser.h"

namespace tvk {

FastXmlParser::~FastXmlParser() = default;

RefCountedPtr<XmlDocument> FastXmlParser::parse(void const * data, unsigned int size,
                                                ErrorInfo * error) {
    return parseBuffer(data, size, error) ? getDocument(error) : nullptr;
}

}  // namespace tvk
