#include "examples/desk/model/NewsListModel.h"

#include <algorithm>
#include <set>
#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/model/Figures.h"
#include "tvk/xml/XmlElement.h"

namespace desk {

namespace {

using tvk::XmlElement;

std::string attributeOf(XmlElement const & element, char const * name) {
    return utf8(element.getAttribute(name));
}

/// Empty where there is no such element.
std::string textBelow(XmlElement const & element, char const * name) {
    auto const found = element.getFirstSubElementWithName(name);
    return found ? utf8(found->text()) : std::string();
}

std::string bodyOf(XmlElement const & article) {
    std::string body;
    if (auto const element = article.getFirstSubElementWithName("body")) {
        for (auto const & paragraph : element->getSubElementsWithName("p")) {
            body += (body.empty() ? "" : "\n\n") + utf8(paragraph->text());
        }
    }
    return body;
}

}  // namespace

void NewsListModel::setIndex(XmlElement const & index) {
    lists_.clear();
    for (auto const & list : index.getSubElementsWithName("list")) {
        lists_.push_back({attributeOf(*list, "id"), attributeOf(*list, "title")});
    }
    ++revision_;
}

void NewsListModel::setHeadlines(XmlElement const & list) {
    std::set<std::string> read;
    for (Headline const & headline : headlines_) {
        if (headline.isRead) {
            read.insert(headline.id);
        }
    }
    headlines_.clear();
    for (auto const & element : list.getSubElementsWithName("headline")) {
        insert(*element);
    }
    for (Headline & headline : headlines_) {
        headline.isRead = read.count(headline.id) != 0;
    }
    ++revision_;
}

void NewsListModel::addHeadline(XmlElement const & headline) {
    if (insert(headline)) {
        ++revision_;
    }
}

std::string NewsListModel::text(int row, Column column) const {
    Headline const & shown = headline(row);
    constexpr std::size_t DAY_DIGITS = 8;
    if (column == TITLE) {
        return shown.title;
    }
    return shown.time.size() > DAY_DIGITS
               ? timeText(std::string_view(shown.time).substr(DAY_DIGITS)).substr(0, 5)
               : shown.time;
}

Tone NewsListModel::tone(int row, Column column) const {
    return column == TIME || headline(row).isRead ? Tone::FAINT : Tone::PLAIN;
}

void NewsListModel::markRead(std::string const & id) {
    beingRead_ = id;
    for (Headline & headline : headlines_) {
        headline.isRead = headline.isRead || headline.id == id;
    }
    ++revision_;
}

int NewsListModel::rowBeingRead() const {
    auto const found =
        std::find_if(headlines_.begin(), headlines_.end(),
                     [&](Headline const & headline) { return headline.id == beingRead_; });
    return found != headlines_.end() ? static_cast<int>(found - headlines_.begin()) : -1;
}

void NewsListModel::setArticle(XmlElement const & article) {
    setArticleText(textBelow(article, "title"), bodyOf(article));
}

void NewsListModel::setArticleText(std::string title, std::string body) {
    articleTitle_ = std::move(title);
    articleBody_ = std::move(body);
    ++articleRevision_;
}

/// Keeps the order of time, and of arrival where times are equal.
bool NewsListModel::insert(XmlElement const & element) {
    Headline const headline{attributeOf(element, "id"), attributeOf(element, "time"),
                            attributeOf(element, "title"), false};
    bool const isKnown =
        std::any_of(headlines_.begin(), headlines_.end(),
                    [&](Headline const & known) { return known.id == headline.id; });
    if (isKnown || headline.id.empty()) {
        return false;
    }
    auto const place =
        std::find_if(headlines_.begin(), headlines_.end(),
                     [&](Headline const & known) { return known.time <= headline.time; });
    headlines_.insert(place, headline);
    if (headlines_.size() > HEADLINE_LIMIT) {
        headlines_.pop_back();
    }
    return true;
}

}  // namespace desk
