#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlversion.h>
#include <libxml/xpath.h>

#include <memory>
#include <string>

#include "bench/XmlSamples.h"
#include "bench/peers/EachItem.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

template <auto release>
struct Release {
    template <class Object>
    void operator()(Object * object) const {
        release(object);
    }
};

using Document = std::unique_ptr<xmlDoc, Release<xmlFreeDoc>>;
using Context = std::unique_ptr<xmlParserCtxt, Release<xmlFreeParserCtxt>>;
using PathContext = std::unique_ptr<xmlXPathContext, Release<xmlXPathFreeContext>>;
using Path = std::unique_ptr<xmlXPathCompExpr, Release<xmlXPathFreeCompExpr>>;
using PathResult = std::unique_ptr<xmlXPathObject, Release<xmlXPathFreeObject>>;

std::string textOf(xmlChar const * text) {
    return text == nullptr ? std::string() : reinterpret_cast<char const *>(text);
}

std::string qualified(xmlNs const * space, xmlChar const * name) {
    return space == nullptr || space->prefix == nullptr
               ? textOf(name)
               : textOf(space->prefix) + ':' + textOf(name);
}

/// The whole text of an element, which libxml2 keeps in pieces.
std::string textOf(xmlNode const * element) {
    std::string text;
    for (xmlNode const * child = element->children; child != nullptr; child = child->next) {
        if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE) {
            text += textOf(child->content);
        }
    }
    return text;
}

std::uint64_t sumOfElement(xmlNode const * element) {
    std::uint64_t sum = TreeSum::ofText(qualified(element->ns, element->name));
    for (xmlAttr const * at = element->properties; at != nullptr; at = at->next) {
        std::string const value = at->children == nullptr ? "" : textOf(at->children->content);
        sum += TreeSum::ofMember(qualified(at->ns, at->name), TreeSum::ofText(value));
    }
    sum = TreeSum::ofElement(sum, TreeSum::ofText(textOf(element)));
    for (xmlNode const * child = element->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            sum = TreeSum::ofElement(sum, sumOfElement(child));
        }
    }
    return sum;
}

/// One context, with its table of names, for all documents.
class LibXml2Reader : public Reader {
public:
    void read(std::string_view document) override { keep(parse(document)); }
    std::uint64_t sum(std::string_view document) override {
        return sumOfElement(xmlDocGetRootElement(parse(document).get()));
    }

private:
    Document parse(std::string_view document) {
        return Document(xmlCtxtReadMemory(context_.get(), document.data(),
                                          static_cast<int>(document.size()), nullptr, nullptr,
                                          XML_PARSE_NONET));
    }

    Context context_{xmlNewParserCtxt()};
};

Document feed() {
    std::string_view const document = xmlFeed().documents().front();
    return Document(xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr,
                                  nullptr, XML_PARSE_NONET));
}

/// The path as an XPath expression, compiled once, of which the first node is taken.
class LibXml2XPath : public ItemWork<XmlPathTask, std::string> {
public:
    LibXml2XPath() { context_->node = xmlDocGetRootElement(feed_.get()); }

    std::string resultOf(XmlPathTask const & task) override {
        PathResult const found = find(task);
        return found->nodesetval == nullptr || found->nodesetval->nodeNr == 0
                   ? std::string()
                   : textOf(found->nodesetval->nodeTab[0]);
    }
    void runAll(std::span<XmlPathTask const> tasks) override {
        for (XmlPathTask const & task : tasks) {
            keep(find(task));
        }
    }

private:
    PathResult find(XmlPathTask const & task) {
        if (task.path != path_) {
            path_ = task.path;
            std::string const expression = '(' + path_ + ")[1]";
            compiled_.reset(xmlXPathCompile(reinterpret_cast<xmlChar const *>(expression.c_str())));
        }
        return PathResult(xmlXPathCompiledEval(compiled_.get(), context_.get()));
    }

    Document feed_ = feed();
    PathContext context_{xmlXPathNewContext(feed_.get())};
    std::string path_;
    Path compiled_;
};

}  // namespace

void addLibXml2(Peers & peers) {
    addPeer<LibXml2Reader>(peers.xmlReaders, "libxml2");
    addPeer<LibXml2XPath>(peers.xmlPathFinders, "libxml2_xpath");
    peers.libraries.push_back("libxml2 " LIBXML_DOTTED_VERSION);
}

}  // namespace tvk::bench
