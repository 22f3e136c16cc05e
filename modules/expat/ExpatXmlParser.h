#pragma once

#include "modules/expat/Export.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/xml/FastXmlParser.h"
#include "tvk/xml/XmlDocument.h"

namespace tvk {

/// An XML parser on the Expat library, with namespaces.
///
///     RefCountedPtr<ExpatXmlParser> const parser(new ExpatXmlParser);
///     ErrorInfo error;
///     RefCountedPtr<XmlDocument> const feed = parser->parse(bytes, size, &error);
///
/// Elements:   elementName() is the local name, namespaceURI() the namespace, empty where there is none,
///             and qualifiedName() the name as written. text() is all character data of the element
///             itself, white space included, without that of its sub-elements.
/// Attributes: under their names as written, with the prefix, default values of an internal DTD
///             included. Declarations of namespaces (xmlns, xmlns:p) are none of them.
/// Text:       in the code page that is set while the document is parsed. The text() of the document,
///             comments and processing instructions are left out.
/// Encodings:  UTF-8, UTF-16, ISO-8859-1, US-ASCII, Shift_JIS (read as Windows-31J) and Windows-1252.
/// Trust:      nothing outside the bytes is ever read. A reference to an external entity in the
///             content is an error; one to an entity that only an external DTD can declare stays in
///             the character data as it is written (`&nbsp;`), and vanishes from an attribute.
///             Entities and default attributes that make much of few bytes, entities that refer to
///             others by the hundred, and namespaces of more than 1024 bytes are errors. The depth of
///             elements has no limit.
/// Failure:    false or null, with ERR_XmlParsingError of ErrorDomain_Kestrin and a message such as
///             "XML parsing error at line 3, column 7: mismatched tag", both counted from 1, columns
///             in characters. The component code stays. `error` may be null. std::bad_alloc where
///             memory is out or a text would pass 0x7fffffff bytes.
/// Threads:    a parser serves one thread at a time.
class TVK_EXPAT_API ExpatXmlParser : public FastXmlParser {
public:
    ExpatXmlParser() = default;
    ExpatXmlParser(ExpatXmlParser const &) = delete;
    ExpatXmlParser & operator=(ExpatXmlParser const &) = delete;
    ~ExpatXmlParser() override;

    /// Starts afresh: whatever comes of it, the document before is no longer held. `data` may be null
    /// when `size` is 0.
    bool parseBuffer(void const * data, unsigned int size, ErrorInfo * error) override;
    /// The document of the last parse, the same one each time. Without one, null and the message "no
    /// XML document was parsed".
    RefCountedPtr<XmlDocument> getDocument(ErrorInfo * error) override;

private:
    RefCountedPtr<XmlDocument> document_;
};

}  // namespace tvk
