#include "examples/backend/News.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tvk/agent/XmlNewsService.h"

namespace tvk::test {

using backend::News;
using backend::xmlEscaped;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr long long NOW = 1'795'000'000'000;
constexpr int INDEX = XmlNewsService::TYPE_MASTER_INDEX;
constexpr int LIST = XmlNewsService::TYPE_HEADER_LINE;
constexpr int ARTICLE = XmlNewsService::TYPE_DETAIL;

std::string attributeIn(std::string const & xml, std::string const & name) {
    std::string const before = " " + name + "=\"";
    std::size_t const begin = xml.find(before) + before.size();
    return xml.substr(begin, xml.find('"', begin) - begin);
}

std::size_t headlinesIn(std::string const & list) {
    std::size_t count = 0;
    for (std::size_t at = list.find("<headline"); at != std::string::npos;
         at = list.find("<headline", at + 1)) {
        ++count;
    }
    return count;
}

std::size_t headlinesOf(News const & news) {
    return headlinesIn(*news.document(LIST, "market")) +
           headlinesIn(*news.document(LIST, "company")) +
           headlinesIn(*news.document(LIST, "economy"));
}

}  // namespace

TEST(BackendNews, EscapesWhatMeansSomethingInXml) {
    EXPECT_EQ(xmlEscaped("a<b>&\"c'"), "a&lt;b&gt;&amp;&quot;c&apos;");
    EXPECT_EQ(xmlEscaped(std::string_view("\0\t\n\x1F x", 6)), "     x");
    EXPECT_EQ(xmlEscaped("市況"), "市況");
    EXPECT_EQ(xmlEscaped("&amp;"), "&amp;amp;");
    EXPECT_EQ(xmlEscaped(""), "");
}

TEST(BackendNews, NamesItsLists) {
    News const news(1, NOW);
    EXPECT_EQ(news.document(INDEX, ""),
              "<index><list id=\"market\" title=\"市況\"/><list id=\"company\" title=\"企業\"/>"
              "<list id=\"economy\" title=\"経済\"/></index>");
    EXPECT_EQ(news.document(INDEX, "anything"), news.document(INDEX, ""));
}

TEST(BackendNews, LeadsFromAListToItsArticles) {
    News const news(1, NOW);
    EXPECT_EQ(headlinesOf(news), 12U);
    for (char const * const list : {"market", "company", "economy"}) {
        std::string const xml = *news.document(LIST, list);
        EXPECT_THAT(xml, StartsWith("<list id=\"" + std::string(list) + "\">"));
        EXPECT_THAT(xml, EndsWith("</list>"));
        for (std::size_t at = xml.find("<headline"); at != std::string::npos;
             at = xml.find("<headline", at + 1)) {
            std::string const headline = xml.substr(at, xml.find("/>", at) + 2 - at);
            std::string const id = attributeIn(headline, "id");
            EXPECT_EQ(attributeIn(headline, "time").size(), 14U);
            auto const article = news.document(ARTICLE, id);
            ASSERT_TRUE(article) << id;
            EXPECT_EQ(attributeIn(*article, "id"), id);
            EXPECT_EQ(attributeIn(*article, "list"), list);
            EXPECT_EQ(attributeIn(*article, "time"), attributeIn(headline, "time"));
            EXPECT_THAT(*article, HasSubstr("<title>" + attributeIn(headline, "title") +
                                            "</title><body><p>"));
            EXPECT_THAT(*article, EndsWith("</p></body></article>"));
        }
    }
}

TEST(BackendNews, WritesTheLatestFirst) {
    News news(1, NOW);
    std::string const headline = news.write(NOW);
    EXPECT_EQ(attributeIn(headline, "id"), "N0013");
    EXPECT_EQ(attributeIn(headline, "time"), "20261118200640");
    std::string const list = attributeIn(*news.document(ARTICLE, "N0013"), "list");
    EXPECT_THAT(*news.document(LIST, list), StartsWith("<list id=\"" + list + "\">" + headline));
}

TEST(BackendNews, KeepsTheLatestOnly) {
    News news(1, NOW);
    for (std::size_t article = 0; article < News::KEPT; ++article) {
        news.write(NOW);
    }
    EXPECT_EQ(headlinesOf(news), News::KEPT);
    EXPECT_FALSE(news.document(ARTICLE, "N0012"));
    EXPECT_TRUE(news.document(ARTICLE, "N0013"));
}

TEST(BackendNews, IsTheSameFromTheSameSeed) {
    EXPECT_EQ(News(1, NOW).document(LIST, "market"), News(1, NOW).document(LIST, "market"));
    EXPECT_NE(News(1, NOW).document(LIST, "market"), News(2, NOW).document(LIST, "market"));
}

TEST(BackendNews, HasNothingElse) {
    News const news(1, NOW);
    EXPECT_FALSE(news.document(LIST, ""));
    EXPECT_FALSE(news.document(LIST, "sports"));
    EXPECT_FALSE(news.document(ARTICLE, ""));
    EXPECT_FALSE(news.document(ARTICLE, "N9999"));
    EXPECT_FALSE(news.document(0, ""));
    EXPECT_FALSE(news.document(4, "N0001"));
}

}  // namespace tvk::test
