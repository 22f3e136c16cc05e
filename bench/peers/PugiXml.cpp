#include <pugixml.hpp>
#include <string>

#include "bench/XmlSamples.h"
#include "bench/peers/EachItem.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

// White space between elements is kept, as tvk keeps it.
constexpr unsigned int OPTIONS = pugi::parse_default | pugi::parse_ws_pcdata;

/// The whole text of an element, which pugixml keeps in pieces.
std::string textOf(pugi::xml_node const & element) {
    std::string text;
    for (pugi::xml_node const & child : element) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
            text += child.value();
        }
    }
    return text;
}

std::uint64_t sumOfElement(pugi::xml_node const & element) {
    std::uint64_t sum = TreeSum::ofText(element.name());
    for (pugi::xml_attribute const & attribute : element.attributes()) {
        std::string_view const name = attribute.name();
        if (name.substr(0, 5) != "xmlns") {
            sum += TreeSum::ofMember(name, TreeSum::ofText(attribute.value()));
        }
    }
    sum = TreeSum::ofElement(sum, TreeSum::ofText(textOf(element)));
    for (pugi::xml_node const & child : element) {
        if (child.type() == pugi::node_element) {
            sum = TreeSum::ofElement(sum, sumOfElement(child));
        }
    }
    return sum;
}

/// Takes a copy of the document, in a block of its own.
class PugiReader : public Reader {
public:
    void read(std::string_view document) override {
        pugi::xml_document tree;
        tree.load_buffer(document.data(), document.size(), OPTIONS, pugi::encoding_utf8);
        keep(tree);
    }
    std::uint64_t sum(std::string_view document) override {
        pugi::xml_document tree;
        tree.load_buffer(document.data(), document.size(), OPTIONS, pugi::encoding_utf8);
        return sumOfElement(tree.document_element());
    }
};

class PugiPath : public ItemWork<XmlPathTask, std::string> {
public:
    PugiPath() {
        std::string_view const document = xmlFeed().documents().front();
        tree_.load_buffer(document.data(), document.size(), OPTIONS, pugi::encoding_utf8);
    }

    std::string resultOf(XmlPathTask const & task) override { return textOf(find(task)); }
    void runAll(std::span<XmlPathTask const> tasks) override {
        for (XmlPathTask const & task : tasks) {
            keep(find(task));
        }
    }

private:
    pugi::xml_node find(XmlPathTask const & task) const {
        return tree_.document_element().first_element_by_path(task.path.c_str());
    }

    pugi::xml_document tree_;
};

}  // namespace

void addPugiXml(Peers & peers) {
    addPeer<PugiReader>(peers.xmlReaders, "pugixml");
    addPeer<PugiPath>(peers.xmlPathFinders, "pugixml");
    peers.libraries.push_back("pugixml " + dotted(PUGIXML_VERSION / 1000,
                                                  PUGIXML_VERSION / 10 % 100,
                                                  PUGIXML_VERSION % 10));
}

}  // namespace tvk::bench
