#include "bench/XmlSamples.h"

namespace tvk::bench {

namespace {

constexpr int ITEMS = 300;
constexpr char DECLARATION[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::string item(int number) {
    std::string const id = std::to_string(number);
    return "    <item>\n      <title>Rates &amp; shares, part " + id +
           "</title>\n      <link>https://news.example.com/2024/01/05/" + id +
           ".html</link>\n      <guid isPermaLink=\"false\">20240105-" + id +
           "</guid>\n      <dc:creator>編集部</dc:creator>\n      <description>東京市場は" + id +
           "円高で始まり、午後は小幅に下げました。</description>\n    </item>\n";
}

std::string feed() {
    std::string xml = std::string(DECLARATION) +
                      "<rss version=\"2.0\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n"
                      "  <channel>\n    <title>Market headlines</title>\n";
    for (int i = 0; i < ITEMS; ++i) {
        xml += item(i);
    }
    // The one item with a category is the last.
    return xml + "    <item><title>Last</title><category>shares</category></item>\n" +
           "  </channel>\n</rss>\n";
}

std::string orders() {
    std::string xml = std::string(DECLARATION) +
                      "<FIXML xmlns=\"http://www.fixprotocol.org/FIXML-5-0-SP2\" v=\"5.0 SP2\">\n";
    for (int i = 0; i < ITEMS; ++i) {
        std::string const id = std::to_string(100000 + i);
        xml += "  <ExecRpt ID=\"E" + id + "\" ExecID=\"" + id + "\" OrdID=\"O-" + id +
               "\" Side=\"" + (i % 2 == 0 ? "1" : "2") +
               "\" LastQty=\"100\" LastPx=\"1764.5\" TxnTm=\"2024-01-05T09:00:01.250+09:00\">"
               "<Instrmt Sym=\"7203\" Exch=\"XTKS\" Desc=\"トヨタ自動車\"/>"
               "<Pty ID=\"C" +
               id + "\" R=\"1\"/></ExecRpt>\n";
    }
    return xml + "</FIXML>\n";
}

std::string reply(int number) {
    std::string const id = std::to_string(1000 + number);
    return std::string(DECLARATION) +
           "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
           "<soap:Header><t:Session xmlns:t=\"urn:example:session\">A" +
           id +
           "</t:Session></soap:Header><soap:Body>"
           "<q:GetQuoteResponse xmlns:q=\"urn:example:quotes\"><q:quote code=\"" +
           id + "\" market=\"T\"><q:last>1764.5</q:last><q:volume>" + id +
           "00</q:volume><q:time>09:00:01.250</q:time></q:quote></q:GetQuoteResponse>"
           "</soap:Body></soap:Envelope>\n";
}

}  // namespace

Corpus const & xmlFeed() {
    static Corpus const FEED("feed", {feed()});
    return FEED;
}

Corpus const & xmlOrders() {
    static Corpus const ORDERS("orders", {orders()});
    return ORDERS;
}

Corpus const & xmlReplies() {
    static Corpus const REPLIES = [] {
        std::vector<std::string> documents;
        for (int i = 0; i < ITEMS; ++i) {
            documents.push_back(reply(i));
        }
        return Corpus("replies", documents);
    }();
    return REPLIES;
}

}  // namespace tvk::bench
