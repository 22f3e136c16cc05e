#pragma once

#include <list>
#include <map>
#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// An element of an XML tree: names, character data, attributes and sub-elements. A parser fills it;
/// nothing here reads XML.
///
/// Ownership: counted; ends with its last reference. One count on each sub-element that is not null.
///            An element may stand in several places, but not below itself.
/// Copies:    are shallow: they share the sub-elements, and leave out the character data.
/// Depth:     ending and comparing need no more stack for a deep tree than for a flat one.
/// Threads:   none is guarded, and counts are not atomic: a tree belongs to one thread at a time.
/// Failure:   a look-up that misses is a null reference, an empty text, false or an empty list.
///            std::length_error "list too long" beyond the room of std::list.
class TVK_API XmlElement : public RefCounted {
public:
    using SubElementList = std::list<RefCountedPtr<XmlElement>>;

    XmlElement() = default;
    explicit XmlElement(CString const & name);
    /// Shares the sub-elements; the character data is empty.
    XmlElement(XmlElement const & other);
    /// Replaces all but the character data, which stays this element's own, as its count does.
    XmlElement & operator=(XmlElement const & other);

    /// Same names and attributes, equally many sub-elements, and each sub-element on the left equal
    /// to the first one on the right; the same object is always equal. Character data takes no part.
    bool operator==(XmlElement const & other) const;

    CString & elementName() { return elementName_; }  ///< what every look-up goes by
    CString const & elementName() const { return elementName_; }
    CString & namespaceURI() { return namespaceURI_; }
    CString const & namespaceURI() const { return namespaceURI_; }
    CString & qualifiedName() { return qualifiedName_; }  ///< as written, with its prefix
    CString const & qualifiedName() const { return qualifiedName_; }
    CString & text() { return text_; }  ///< character data
    CString const & text() const { return text_; }

    unsigned int getAttributeCount() const;
    std::vector<CString> getAttributeNames() const;  ///< in the order of their bytes
    CString getAttribute(CString const & name) const;
    bool hasAttribute(CString const & name) const;
    void setAttribute(CString const & name, CString const & value);

    SubElementList & subElementList() { return subElementList_; }  ///< in document order
    SubElementList const & subElementList() const { return subElementList_; }
    unsigned int getSubElementCount() const;
    /// A null is stored like any other; look-ups pass over it.
    void addSubElement(RefCountedPtr<XmlElement> const & element);
    void addSubElementAtFront(RefCountedPtr<XmlElement> const & element);
    /// Removes the first entry that is this very object, null included; false where there is none.
    bool removeSubElement(XmlElement const * element);
    void removeAllSubElements();

    // Look-ups among the sub-elements, not below them, in document order.
    SubElementList getSubElementsWithName(CString const & name) const;
    /// Those that have one of `count` names; a name that stands there twice lists them twice.
    SubElementList getSubElementsWithNames(unsigned int count, CString * names) const;
    SubElementList getSubElementsWithNameInNamespace(CString const & name,
                                                     CString const & namespaceURI) const;
    RefCountedPtr<XmlElement> getFirstSubElementWithName(CString const & name) const;
    RefCountedPtr<XmlElement> getFirstSubElementWithNameInNamespace(
        CString const & name, CString const & namespaceURI) const;

protected:
    ~XmlElement() override;

private:
    bool equalButForSubElements(XmlElement const & other) const;

    CString elementName_;
    CString namespaceURI_;
    CString qualifiedName_;
    CString text_;
    std::map<CString, CString> attributes_;
    SubElementList subElementList_;
};

}  // namespace tvk
