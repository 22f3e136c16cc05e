#include "tvk/xml/XmlDocument.h"

namespace tvk {

XmlDocument::XmlDocument(XmlDocument const & other)
    : RefCounted(other), text_(other.text_), rootElement_(other.rootElement_) {}

XmlDocument & XmlDocument::operator=(XmlDocument const & other) {
    if (&other != this) {
        text_ = other.text_;
        rootElement_ = other.rootElement_;
    }
    return *this;
}

XmlDocument::~XmlDocument() = default;

RefCountedPtr<XmlElement> XmlDocument::getRootElement() const { return rootElement_; }

void XmlDocument::setRootElement(RefCountedPtr<XmlElement> const & root) { rootElement_ = root; }

}  // namespace tvk
