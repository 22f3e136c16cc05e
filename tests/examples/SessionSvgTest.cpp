#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "examples/session/CandleChart.h"
#include "tests/examples/SvgRoot.h"

namespace tvk::test {

namespace {

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
        auto const root = svgRootOf(chart.toSvg());
        ASSERT_TRUE(root);
        EXPECT_STREQ(root->elementName().GetString(), "svg");
        EXPECT_STREQ(root->namespaceURI().GetString(), "http://www.w3.org/2000/svg");
        EXPECT_EQ(root->getSubElementsWithName("g").size(), chart.candles.size());
    }
}

}  // namespace tvk::test
