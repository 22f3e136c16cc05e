#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/TextBytes.h"
#include "tvk/platform/CodePage.h"
#include "tvk/xml/XmlElement.h"

namespace tvk::test {

/// Writes a tree as an XML document in UTF-8 that reads back as the same tree: each element with its
/// text first and its sub-elements behind it. Declares the namespace of each element at the element, and
/// one of its own making for the prefix of an attribute, of which the tree does not tell.
///
/// Requires: names and texts that a parser has made.
class XmlWriter {
public:
    static std::string written(XmlElement const & root) {
        XmlWriter writer;
        writer.open(root);
        // Deep trees must not need deep stacks.
        while (!writer.levels_.empty()) {
            Level & level = writer.levels_.back();
            if (level.next == level.element->subElementList().end()) {
                writer.close();
            } else {
                writer.open(**level.next++);
            }
        }
        return std::move(writer.output_);
    }

private:
    struct Level {
        XmlElement const * element;
        XmlElement::SubElementList::const_iterator next;
    };

    void open(XmlElement const & element) {
        output_ += '<' + utf8(element.qualifiedName());
        declareNamespaces(element);
        for (CString const & name : element.getAttributeNames()) {
            writeAttribute(utf8(name), element.getAttribute(name));
        }
        output_ += '>';
        output_ += escaped(utf8(element.text()));
        levels_.push_back({&element, element.subElementList().begin()});
    }

    void close() {
        output_ += "</" + utf8(levels_.back().element->qualifiedName()) + '>';
        levels_.pop_back();
    }

    void declareNamespaces(XmlElement const & element) {
        std::string const own = prefixOf(utf8(element.qualifiedName()));
        if (own.empty()) {
            writeAttribute("xmlns", element.namespaceURI());
        } else if (own != "xml") {
            writeAttribute("xmlns:" + own, element.namespaceURI());
        }
        std::set<std::string> declared{"", "xml", own};
        for (CString const & name : element.getAttributeNames()) {
            std::string const prefix = prefixOf(utf8(name));
            if (declared.insert(prefix).second) {
                std::string const made = "urn:" + std::to_string(declared.size());
                bool const isTaken = bytesOf(element.namespaceURI()) == made;
                writeAttribute("xmlns:" + prefix, (isTaken ? made + "-" : made).c_str());
            }
        }
    }

    void writeAttribute(std::string const & name, CString const & value) {
        output_ += ' ' + name + "=\"" + escaped(utf8(value)) + '"';
    }

    static std::string prefixOf(std::string const & qualified) {
        std::size_t const colon = qualified.find(':');
        return colon == std::string::npos ? std::string() : qualified.substr(0, colon);
    }

    static std::string utf8(CString const & text) {
        return bytesOf(
            platform::ansiToUtf8(text.GetString(), static_cast<unsigned int>(text.GetLength())));
    }

    /// White space but the blank is written as a number: parsers make others of it.
    static std::string escaped(std::string_view text) {
        std::string result;
        for (char const byte : text) {
            switch (byte) {
                case '&':
                case '<':
                case '>':
                case '"':
                case '\t':
                case '\n':
                case '\r':
                    result += "&#" + std::to_string(byte) + ';';
                    break;
                default:
                    result += byte;
            }
        }
        return result;
    }

    std::string output_;
    std::vector<Level> levels_;
};

}  // namespace tvk::test
