#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/xml/XmlElement.h"

namespace tvk::expat {

/// A name with its parts, in UTF-8; the namespace and the prefix are empty where there is none.
struct Name {
    std::string_view namespaceURI;
    std::string_view local;
    std::string_view prefix;
};

/// Builds a tree from what a parser meets, in its order and in UTF-8; the tree has it in the code page.
///
/// Equal names and namespaces share one text: elements of a kind cost little more than their nodes,
/// and a long namespace is not held once for each element that stands in it.
class TreeBuilder {
public:
    void startElement(Name const & name);
    /// Of the element that was started last; nothing may stand between.
    void addAttribute(Name const & name, std::string_view value);
    /// One piece of character data, which may be cut anywhere.
    void addText(std::string_view piece);
    void endElement();

    /// Null before the first element.
    RefCountedPtr<XmlElement> const & root() const { return root_; }

private:
    struct Open {
        XmlElement * element;
        std::size_t textStart;
    };

    CString const & shared(std::string_view text);
    CString const & qualified(Name const & name);

    RefCountedPtr<XmlElement> root_;
    std::vector<Open> open_;  // all in the tree below root_
    // The character data of the open elements, one behind the other: an element that ends takes its
    // own from the end, and that of the one around it goes on there.
    std::string text_;
    // Ordered, not hashed: a document must not be able to choose names that collide.
    std::map<std::string, CString, std::less<>> shared_;
    std::string qualified_;
};

}  // namespace tvk::expat
