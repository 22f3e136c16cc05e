#include "modules/expat/detail/DocumentReader.h"

#include <algorithm>
#include <new>

#include "modules/expat/detail/Encodings.h"

namespace tvk::expat {

namespace {

/// Between the parts of a name: no document can hold it, not even as a character reference.
constexpr XML_Char SEPARATOR = '\f';

// Limits for documents that make much of few bytes. Expat has one of its own for entities; it is
// tightened, since the elements of a tree take some 50 times the bytes they are written with.
constexpr unsigned long long ENTITY_BYTES_IN_ANY_CASE = 1 << 20;
constexpr float MOST_ENTITY_BYTES_PER_BYTE = 10;
constexpr std::size_t DEFAULT_BYTES_IN_ANY_CASE = 8 << 20;
constexpr std::size_t MOST_DEFAULT_BYTES_PER_BYTE = 100;
constexpr std::size_t BYTES_OF_AN_ATTRIBUTE = 80;  // beside its texts
/// Expat calls itself for an entity within an entity, which takes up to 500 bytes of stack.
constexpr unsigned int MOST_ENTITIES_OF_ENTITIES = 256;
/// Expat writes the namespace out for each name that stands in it.
constexpr std::size_t LONGEST_NAMESPACE = 1024;

Name nameOf(std::string_view written) {
    std::size_t const first = written.find(SEPARATOR);
    if (first == std::string_view::npos) {
        return {{}, written, {}};
    }
    std::string_view const behind = written.substr(first + 1);
    std::size_t const second = behind.find(SEPARATOR);
    std::string_view const prefix =
        second == std::string_view::npos ? std::string_view() : behind.substr(second + 1);
    return {written.substr(0, first), behind.substr(0, second), prefix};
}

std::string_view viewOf(XML_Char const * bytes, int size) {
    return {bytes, static_cast<std::size_t>(size)};
}

}  // namespace

/// What Expat calls. Nothing is thrown through its C code: an exception waits until Expat returns.
struct DocumentReader::Handlers {
    static void XMLCALL startElement(void * reader, XML_Char const * name,
                                     XML_Char const ** attributes) {
        call(reader, [&](DocumentReader & self) { self.startElement(name, attributes); });
    }
    static void XMLCALL endElement(void * reader, XML_Char const *) {
        call(reader, [](DocumentReader & self) { self.endElement(); });
    }
    static void XMLCALL characterData(void * reader, XML_Char const * piece, int size) {
        call(reader, [&](DocumentReader & self) { self.addText(viewOf(piece, size)); });
    }
    static void XMLCALL skippedEntity(void * reader, XML_Char const * name, int isParameter) {
        if (isParameter == 0) {
            call(reader, [&](DocumentReader & self) { self.keepReference(name); });
        }
    }
    static void XMLCALL entityDeclaration(void * reader, XML_Char const *, int,
                                          XML_Char const * value, int size, XML_Char const *,
                                          XML_Char const *, XML_Char const *, XML_Char const *) {
        if (value != nullptr) {
            call(reader, [&](DocumentReader & self) { self.noteEntity(viewOf(value, size)); });
        }
    }
    static void XMLCALL namespaceDeclaration(void * reader, XML_Char const *,
                                             XML_Char const * namespaceURI) {
        if (namespaceURI != nullptr) {
            call(reader, [&](DocumentReader & self) { self.noteNamespace(namespaceURI); });
        }
    }
    static int XMLCALL externalEntity(XML_Parser, XML_Char const *, XML_Char const *,
                                      XML_Char const *, XML_Char const *) {
        return XML_STATUS_ERROR;
    }

private:
    template <class Action>
    static void call(void * reader, Action const & action) noexcept {
        auto & self = *static_cast<DocumentReader *>(reader);
        if (self.isStopped_) {
            return;  // Expat still tells the end of an empty element whose start stopped it
        }
        try {
            action(self);
        } catch (...) {
            self.thrown_ = std::current_exception();
            self.stop();
        }
    }
};

DocumentReader::DocumentReader(std::size_t largestPiece)
    : parser_(XML_ParserCreateNS(nullptr, SEPARATOR)), largestPiece_(largestPiece) {
    auto * const parser = parser_.get();
    if (parser == nullptr) {
        throw std::bad_alloc();
    }
    XML_SetUserData(parser, this);
    XML_SetReturnNSTriplet(parser, XML_TRUE);
    XML_SetElementHandler(parser, Handlers::startElement, Handlers::endElement);
    XML_SetCharacterDataHandler(parser, Handlers::characterData);
    XML_SetSkippedEntityHandler(parser, Handlers::skippedEntity);
    XML_SetEntityDeclHandler(parser, Handlers::entityDeclaration);
    XML_SetStartNamespaceDeclHandler(parser, Handlers::namespaceDeclaration);
    XML_SetUnknownEncodingHandler(parser, findEncoding, nullptr);
    // Neither is ever followed: references to external entities are errors, external DTDs are passed over.
    XML_SetExternalEntityRefHandler(parser, Handlers::externalEntity);
    XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_NEVER);
    XML_SetBillionLaughsAttackProtectionActivationThreshold(parser, ENTITY_BYTES_IN_ANY_CASE);
    XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser, MOST_ENTITY_BYTES_PER_BYTE);
}

bool DocumentReader::read(void const * data, std::size_t size) {
    auto const * next = static_cast<char const *>(data);
    do {
        std::size_t const piece = std::min(size, largestPiece_);
        size -= piece;
        if (XML_Parse(parser_.get(), next, static_cast<int>(piece), size == 0) != XML_STATUS_OK) {
            noteFailure();
            return false;
        }
        next += piece;
    } while (size != 0);
    return true;
}

void DocumentReader::startElement(XML_Char const * name, XML_Char const ** attributes) {
    tree_.startElement(nameOf(name));
    // Name and value in turn, those of the start tag first, and a null at the end.
    int const written = XML_GetSpecifiedAttributeCount(parser_.get());
    for (int i = 0; attributes[i] != nullptr; i += 2) {
        Name const attribute = nameOf(attributes[i]);
        std::string_view const value = attributes[i + 1];
        if (i >= written) {
            noteDefault(attribute, value);
        }
        tree_.addAttribute(attribute, value);
    }
}

void DocumentReader::keepReference(std::string_view entity) {
    tree_.addText("&");
    tree_.addText(entity);
    tree_.addText(";");
}

void DocumentReader::noteEntity(std::string_view value) {
    if (value.find('&') != std::string_view::npos &&
        ++entitiesOfEntities_ > MOST_ENTITIES_OF_ENTITIES) {
        refuse("too many entities that refer to others");
    }
}

void DocumentReader::noteNamespace(std::string_view namespaceURI) {
    if (namespaceURI.size() > LONGEST_NAMESPACE) {
        refuse("too long a namespace");
    }
}

void DocumentReader::noteDefault(Name const & name, std::string_view value) {
    defaultBytes_ += BYTES_OF_AN_ATTRIBUTE + name.local.size() + value.size();
    auto const bytesRead = static_cast<std::size_t>(XML_GetCurrentByteIndex(parser_.get()));
    if (defaultBytes_ > DEFAULT_BYTES_IN_ANY_CASE &&
        defaultBytes_ / MOST_DEFAULT_BYTES_PER_BYTE > bytesRead) {
        refuse("too much by default values of attributes");
    }
}

void DocumentReader::refuse(char const * reason) {
    refusal_ = reason;
    stop();
}

void DocumentReader::stop() {
    isStopped_ = true;
    XML_StopParser(parser_.get(), XML_FALSE);
}

void DocumentReader::noteFailure() {
    if (thrown_) {
        std::rethrow_exception(thrown_);
    }
    auto * const parser = parser_.get();
    XML_Error const code = XML_GetErrorCode(parser);
    if (code == XML_ERROR_NO_MEMORY) {
        throw std::bad_alloc();
    }
    failure_.Format("XML parsing error at line %llu, column %llu: %s",
                    static_cast<unsigned long long>(XML_GetCurrentLineNumber(parser)),
                    static_cast<unsigned long long>(XML_GetCurrentColumnNumber(parser)) + 1,
                    refusal_ != nullptr ? refusal_ : XML_ErrorString(code));
}

}  // namespace tvk::expat
