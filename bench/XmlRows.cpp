#include "bench/ItemRows.h"
#include "bench/ReadRows.h"
#include "bench/XmlSamples.h"

namespace tvk::bench {

namespace {

void addPathRows(Peers const & peers, std::string const & name, std::string const & path) {
    addItemRows<XmlPathTask, std::string>("xml_path/" + name, peers.xmlPathFinders, [path] {
        return ItemList<XmlPathTask>{{{path, CString(path.c_str())}}, 0};
    });
}

}  // namespace

void addXmlRows(Peers const & peers) {
    if (peers.xmlReaders.empty()) {
        return;  // tvk has no parser in this build
    }
    for (CorpusSource const sample :
         {CorpusSource{"feed", xmlFeed}, {"orders", xmlOrders}, {"replies", xmlReplies}}) {
        addReadRows("read_xml", peers.xmlReaders, sample);
    }
    addPathRows(peers, "first_of_301", "channel/item/title");
    addPathRows(peers, "last_of_301", "channel/item/category");
    addPathRows(peers, "none_of_301", "channel/item/comments");
}

}  // namespace tvk::bench
