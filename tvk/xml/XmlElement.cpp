#include "tvk/xml/XmlElement.h"

#include <algorithm>
#include <utility>

#include "tvk/values/detail/DeferredRelease.h"
#include "tvk/xml/detail/ListLimit.h"

namespace tvk {

namespace {

using Reference = RefCountedPtr<XmlElement>;

auto hasName(CString const & name) {
    return [&name](Reference const & element) {
        return !element.isNull() && element->elementName() == name;
    };
}

auto hasNameInNamespace(CString const & name, CString const & namespaceURI) {
    return [&name, &namespaceURI](Reference const & element) {
        return !element.isNull() && element->elementName() == name &&
               element->namespaceURI() == namespaceURI;
    };
}

template <class Predicate>
XmlElement::SubElementList allWith(XmlElement::SubElementList const & elements,
                                   Predicate const & matches) {
    XmlElement::SubElementList found;
    for (Reference const & element : elements) {
        if (matches(element)) {
            detail::append(found, element);
        }
    }
    return found;
}

template <class Predicate>
Reference firstWith(XmlElement::SubElementList const & elements, Predicate const & matches) {
    auto const found = std::find_if(elements.begin(), elements.end(), matches);
    return found == elements.end() ? Reference() : *found;
}

}  // namespace

XmlElement::XmlElement(CString const & name) : elementName_(name) {}

// Deliberate: the text stays behind, here and in the assignment. Copies are made to reuse names,
// attributes and children of an element around a text of one's own.
XmlElement::XmlElement(XmlElement const & other)
    : RefCounted(other),
      elementName_(other.elementName_),
      namespaceURI_(other.namespaceURI_),
      qualifiedName_(other.qualifiedName_),
      attributes_(other.attributes_),
      subElementList_(other.subElementList_) {}

XmlElement & XmlElement::operator=(XmlElement const & other) {
    if (&other != this) {
        auto attributes = other.attributes_;
        auto subElements = other.subElementList_;
        elementName_ = other.elementName_;
        namespaceURI_ = other.namespaceURI_;
        qualifiedName_ = other.qualifiedName_;
        attributes_.swap(attributes);
        // The old sub-elements go last: one of them may be all that keeps the source alive.
        subElementList_.swap(subElements);
    }
    return *this;
}

XmlElement::~XmlElement() {
    detail::ContainerEnd end;
    end.releaseAll(subElementList_);
}

bool XmlElement::operator==(XmlElement const & other) const {
    if (this == &other) {
        return true;
    }
    if (!equalButForSubElements(other)) {
        return false;
    }
    // Pairs of different elements that are equal but for their sub-elements, of which they have
    // equally many, and at least one.
    std::vector<std::pair<XmlElement const *, XmlElement const *>> open;
    auto const keepOpen = [&open](XmlElement const & left, XmlElement const & right) {
        if (!left.subElementList_.empty()) {
            open.emplace_back(&left, &right);
        }
    };
    keepOpen(*this, other);
    while (!open.empty()) {
        auto const [leftParent, rightParent] = open.back();
        open.pop_back();
        // Deliberate: the right side stays at its first sub-element, so an element with different
        // children does not equal its own copy. Modules tell lists of like rows from others by it.
        XmlElement const * const right = rightParent->subElementList_.front().get();
        for (Reference const & left : leftParent->subElementList_) {
            if (left == right) {
                continue;
            }
            if (left.isNull() || right == nullptr || !left->equalButForSubElements(*right)) {
                return false;
            }
            keepOpen(*left, *right);
        }
    }
    return true;
}

bool XmlElement::equalButForSubElements(XmlElement const & other) const {
    return elementName_ == other.elementName_ && namespaceURI_ == other.namespaceURI_ &&
           qualifiedName_ == other.qualifiedName_ &&
           subElementList_.size() == other.subElementList_.size() &&
           attributes_ == other.attributes_;
}

unsigned int XmlElement::getAttributeCount() const {
    return static_cast<unsigned int>(attributes_.size());
}

std::vector<CString> XmlElement::getAttributeNames() const {
    std::vector<CString> names;
    names.reserve(attributes_.size());
    for (auto const & attribute : attributes_) {
        names.push_back(attribute.first);
    }
    return names;
}

CString XmlElement::getAttribute(CString const & name) const {
    auto const found = attributes_.find(name);
    return found == attributes_.end() ? CString() : found->second;
}

bool XmlElement::hasAttribute(CString const & name) const { return attributes_.count(name) != 0; }

void XmlElement::setAttribute(CString const & name, CString const & value) {
    attributes_.insert_or_assign(name, value);
}

unsigned int XmlElement::getSubElementCount() const {
    return static_cast<unsigned int>(subElementList_.size());
}

void XmlElement::addSubElement(RefCountedPtr<XmlElement> const & element) {
    detail::append(subElementList_, element);
}

void XmlElement::addSubElementAtFront(RefCountedPtr<XmlElement> const & element) {
    detail::prepend(subElementList_, element);
}

bool XmlElement::removeSubElement(XmlElement const * element) {
    auto const found = std::find(subElementList_.begin(), subElementList_.end(), element);
    if (found == subElementList_.end()) {
        return false;
    }
    // The list is whole again before the element may end.
    Reference const removed = std::move(*found);
    subElementList_.erase(found);
    return true;
}

void XmlElement::removeAllSubElements() {
    SubElementList const removed = std::exchange(subElementList_, SubElementList());
}

XmlElement::SubElementList XmlElement::getSubElementsWithName(CString const & name) const {
    return allWith(subElementList_, hasName(name));
}

XmlElement::SubElementList XmlElement::getSubElementsWithNames(unsigned int count,
                                                               CString * const names) const {
    SubElementList found;
    for (Reference const & element : subElementList_) {
        for (unsigned int i = 0; i < count; ++i) {
            if (hasName(names[i])(element)) {
                detail::append(found, element);
            }
        }
    }
    return found;
}

XmlElement::SubElementList XmlElement::getSubElementsWithNameInNamespace(
    CString const & name, CString const & namespaceURI) const {
    return allWith(subElementList_, hasNameInNamespace(name, namespaceURI));
}

RefCountedPtr<XmlElement> XmlElement::getFirstSubElementWithName(CString const & name) const {
    return firstWith(subElementList_, hasName(name));
}

RefCountedPtr<XmlElement> XmlElement::getFirstSubElementWithNameInNamespace(
    CString const & name, CString const & namespaceURI) const {
    return firstWith(subElementList_, hasNameInNamespace(name, namespaceURI));
}

}  // namespace tvk
