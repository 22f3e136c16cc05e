#pragma once

#include "tvk/platform/CString.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/xml/XmlElement.h"

namespace tvk {

/// An XML tree: the root element, and a text of the document as a whole, which nothing here reads.
///
/// Ownership: counted; ends with its last reference. One count on the root element.
/// Copies:    share the root element; both keep counts of their own.
/// Threads:   as XmlElement.
class TVK_API XmlDocument : public RefCounted {
public:
    XmlDocument() = default;
    XmlDocument(XmlDocument const & other);
    XmlDocument & operator=(XmlDocument const & other);

    CString & text() { return text_; }
    CString const & text() const { return text_; }

    RefCountedPtr<XmlElement> getRootElement() const;  ///< null in a new document
    void setRootElement(RefCountedPtr<XmlElement> const & root);

protected:
    ~XmlDocument() override;

private:
    CString text_;
    RefCountedPtr<XmlElement> rootElement_;
};

}  // namespace tvk
