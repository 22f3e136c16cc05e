#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "examples/session/CandleChart.h"
#include "modules/expat/ExpatXmlParser.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/xml/XmlDocument.h"

namespace tvk::test {

namespace {

RefCountedPtr<XmlElement> rootOf(std::string const & svg) {
    ErrorInfo error;
    RefCountedPtr<ExpatXmlParser> const parser(new ExpatXmlParser);
    auto const document = parser->parse(svg.data(), static_cast<unsigned int>(svg.size()), &error);
    if (document.isNull()) {
        ADD_FAILURE() << error.getErrorMessage().GetString();
        return nullptr;
    }
    return document->getRootElement();
}

Candle candleNumber(int number) {
    double const price = 100 + number % 7;
    return {"20260731", "093000", price, price + 1, price - 1, price + 0.5, 10.0 * number};
}

}  // namespace

TEST(SessionSvg, IsXmlWhateverItShows) {
    std::vector<Candle> candles;
    for (int i = 0; i < 40; ++i) {
        candles.push_back(candleNumber(i));
    }
    std::vector<session::CandleChart> const charts{
        {"", "", {}, false},
        {"&\"<>'\x02\xFF]]>", "--><!--", {candleNumber(1)}, true},
        {"曙光自動車", "1分足", candles, true},
    };
    for (session::CandleChart const & chart : charts) {
        auto const root = rootOf(chart.toSvg());
        ASSERT_TRUE(root);
        EXPECT_STREQ(root->elementName().GetString(), "svg");
        EXPECT_STREQ(root->namespaceURI().GetString(), "http://www.w3.org/2000/svg");
        EXPECT_EQ(root->getSubElementsWithName("g").size(), chart.candles.size());
    }
}

}  // namespace tvk::test
