#pragma once

#include <expat.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string_view>

#include "modules/expat/detail/TreeBuilder.h"
#include "tvk/platform/CString.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/xml/XmlElement.h"

namespace tvk::expat {

/// Reads one document with Expat. An object serves one call of read().
class DocumentReader {
public:
    /// What Expat is given at a time. It counts in int, and doubles its room for what is left over.
    static constexpr std::size_t LARGEST_PIECE = std::size_t{1} << 28;

    explicit DocumentReader(std::size_t largestPiece = LARGEST_PIECE);

    bool read(void const * data, std::size_t size);

    RefCountedPtr<XmlElement> const & root() const { return tree_.root(); }  ///< after true
    CString const & failure() const { return failure_; }                     ///< after false

private:
    struct Handlers;
    struct Release {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    // What the document tells, in the order of its bytes.
    void startElement(XML_Char const * name, XML_Char const ** attributes);
    void endElement() { tree_.endElement(); }
    void addText(std::string_view piece) { tree_.addText(piece); }
    void keepReference(std::string_view entity);
    void noteEntity(std::string_view value);
    void noteNamespace(std::string_view namespaceURI);
    void noteDefault(Name const & name, std::string_view value);

    void refuse(char const * reason);
    void stop();
    void noteFailure();

    std::unique_ptr<XML_ParserStruct, Release> parser_;
    std::size_t largestPiece_;
    TreeBuilder tree_;
    CString failure_;
    unsigned int entitiesOfEntities_ = 0;
    std::size_t defaultBytes_ = 0;
    bool isStopped_ = false;
    char const * refusal_ = nullptr;  // a literal
    std::exception_ptr thrown_;
};

}  // namespace tvk::expat
