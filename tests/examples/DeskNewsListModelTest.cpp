#include "examples/desk/model/NewsListModel.h"

#include <gtest/gtest.h>

#include "tests/examples/DeskMessages.h"

namespace {

using desk::NewsListModel;
using desk::Tone;
using tvk::XmlElement;
using tvk::test::elementOf;

tvk::RefCountedPtr<XmlElement> headlineOf(char const * id, char const * time, char const * title) {
    return elementOf("headline", {{"id", id}, {"time", time}, {"title", title}});
}

tvk::RefCountedPtr<XmlElement> listOfThree() {
    auto list = elementOf("list", {{"id", "market"}});
    list->addSubElement(headlineOf("a", "20261121093000", "前場は続伸"));
    list->addSubElement(headlineOf("b", "20261121100500", "業績予想を上方修正"));
    list->addSubElement(headlineOf("c", "20261121090000", "寄り付き"));
    list->addSubElement(elementOf("advertisement", {}));
    return list;
}

TEST(DeskNewsListModel, TakesTheIndex) {
    auto const index = elementOf("index", {});
    index->addSubElement(elementOf("list", {{"id", "market"}, {"title", "市況"}}));
    index->addSubElement(elementOf("list", {{"id", "company"}, {"title", "企業"}}));
    NewsListModel model;
    model.setIndex(*index);
    ASSERT_EQ(model.lists().size(), 2U);
    EXPECT_EQ(model.lists()[0].id, "market");
    EXPECT_EQ(model.lists()[1].title, "企業");
}

TEST(DeskNewsListModel, ShowsTheNewestFirst) {
    NewsListModel model;
    model.setHeadlines(*listOfThree());
    ASSERT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.text(0, NewsListModel::TIME), "10:05");
    EXPECT_EQ(model.text(0, NewsListModel::TITLE), "業績予想を上方修正");
    EXPECT_EQ(model.text(2, NewsListModel::TITLE), "寄り付き");
    EXPECT_EQ(model.tone(0, NewsListModel::TITLE), Tone::PLAIN);
    EXPECT_EQ(model.tone(0, NewsListModel::TIME), Tone::FAINT);
}

TEST(DeskNewsListModel, AddsAHeadlineOnce) {
    NewsListModel model;
    model.setHeadlines(*listOfThree());
    model.addHeadline(*headlineOf("d", "20261121110000", "後場"));
    EXPECT_EQ(model.headline(0).id, "d");
    unsigned int const before = model.revision();
    model.addHeadline(*headlineOf("d", "20261121110000", "後場"));
    model.addHeadline(*headlineOf("", "20261121110000", "無名"));
    EXPECT_EQ(model.rowCount(), 4);
    EXPECT_EQ(model.revision(), before);
    model.addHeadline(*headlineOf("e", "soon", "?"));
    EXPECT_EQ(model.text(0, NewsListModel::TIME), "soon");
}

TEST(DeskNewsListModel, LetsTheOldestGo) {
    NewsListModel model;
    for (std::size_t count = 0; count < NewsListModel::HEADLINE_LIMIT + 5; ++count) {
        std::string const number = std::to_string(1000 + count);
        model.addHeadline(*headlineOf(number.c_str(), ("2026112100" + number).c_str(), "x"));
    }
    EXPECT_EQ(model.rowCount(), static_cast<int>(NewsListModel::HEADLINE_LIMIT));
    EXPECT_EQ(model.headline(model.rowCount() - 1).id, "1005");
}

TEST(DeskNewsListModel, RemembersWhatWasRead) {
    NewsListModel model;
    model.setHeadlines(*listOfThree());
    model.markRead("b");
    EXPECT_EQ(model.tone(0, NewsListModel::TITLE), Tone::FAINT);
    model.setHeadlines(*listOfThree());
    EXPECT_TRUE(model.headline(0).isRead);
    EXPECT_FALSE(model.headline(1).isRead);
}

TEST(DeskNewsListModel, FollowsTheHeadlineThatIsBeingRead) {
    NewsListModel model;
    EXPECT_EQ(model.rowBeingRead(), -1);
    model.setHeadlines(*listOfThree());
    model.markRead("b");
    EXPECT_EQ(model.rowBeingRead(), 0);
    model.addHeadline(*headlineOf("d", "20261121110000", "後場"));
    EXPECT_EQ(model.rowBeingRead(), 1);
    model.setHeadlines(*elementOf("list", {}));
    EXPECT_EQ(model.rowBeingRead(), -1);
}

TEST(DeskNewsListModel, ShowsAnArticle) {
    auto const article = elementOf("article", {{"id", "b"}});
    auto const title = elementOf("title", {});
    title->text() = desk::ansi("業績予想を上方修正");
    article->addSubElement(title);
    auto const body = elementOf("body", {});
    for (char const * text : {"一段落。", "二段落。"}) {
        auto const paragraph = elementOf("p", {});
        paragraph->text() = desk::ansi(text);
        body->addSubElement(paragraph);
    }
    article->addSubElement(body);

    NewsListModel model;
    unsigned int const before = model.articleRevision();
    model.setArticle(*article);
    EXPECT_EQ(model.articleTitle(), "業績予想を上方修正");
    EXPECT_EQ(model.articleBody(), "一段落。\n\n二段落。");
    EXPECT_NE(model.articleRevision(), before);

    model.setArticle(*elementOf("article", {}));
    EXPECT_EQ(model.articleTitle(), "");
    EXPECT_EQ(model.articleBody(), "");
}

}  // namespace
