#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TextBytes.h"
#include "tvk/xml/XmlElement.h"

namespace tvk::test {

/// A text on one line: a line feed as \n, a backslash twice.
inline std::string onOneLine(CString const & text) {
    std::string line;
    for (char const byte : bytesOf(text)) {
        line += byte == '\n' ? "\\n" : byte == '\\' ? "\\\\" : std::string(1, byte);
    }
    return line;
}

/// One element as a line: its namespace in braces, its name as written, its local name where that does
/// not follow from it, its attributes and its text.
inline std::string lineOf(XmlElement const & element) {
    std::string line;
    if (!element.namespaceURI().IsEmpty()) {
        line += '{' + bytesOf(element.namespaceURI()) + '}';
    }
    std::string const qualified = bytesOf(element.qualifiedName());
    std::string const local = bytesOf(element.elementName());
    line += qualified;
    if (qualified.substr(qualified.find(':') + 1) != local) {
        line += " (" + local + ')';
    }
    for (CString const & name : element.getAttributeNames()) {
        line += ' ' + bytesOf(name) + '=' + onOneLine(element.getAttribute(name));
    }
    if (!element.text().IsEmpty()) {
        line += " \"" + onOneLine(element.text()) + '"';
    }
    return line;
}

/// A tree as lines, two blanks deeper for each level.
inline std::string outlineOf(XmlElement const & root) {
    std::string outline;
    std::vector<std::pair<XmlElement const *, std::size_t>> open{{&root, 0}};
    while (!open.empty()) {
        auto const [element, depth] = open.back();
        open.pop_back();
        outline += std::string(depth * 2, ' ') + lineOf(*element) + '\n';
        auto const & children = element->subElementList();
        for (auto at = children.rbegin(); at != children.rend(); ++at) {
            open.emplace_back(at->get(), depth + 1);
        }
    }
    return outline;
}

inline bool sameElement(XmlElement const & left, XmlElement const & right) {
    std::vector<CString> const names = left.getAttributeNames();
    return left.elementName() == right.elementName() &&
           left.namespaceURI() == right.namespaceURI() &&
           left.qualifiedName() == right.qualifiedName() && left.text() == right.text() &&
           names == right.getAttributeNames() &&
           std::all_of(names.begin(), names.end(),
                       [&](CString const & name) {
                           return left.getAttribute(name) == right.getAttribute(name);
                       }) &&
           left.getSubElementCount() == right.getSubElementCount();
}

/// All of two trees, texts and all sub-elements included, which operator== leaves out.
inline bool sameTree(XmlElement const & left, XmlElement const & right) {
    std::vector<std::pair<XmlElement const *, XmlElement const *>> open{{&left, &right}};
    while (!open.empty()) {
        auto const [one, other] = open.back();
        open.pop_back();
        if (!sameElement(*one, *other)) {
            return false;
        }
        auto at = other->subElementList().begin();
        for (auto const & child : one->subElementList()) {
            open.emplace_back(child.get(), (at++)->get());
        }
    }
    return true;
}

}  // namespace tvk::test
