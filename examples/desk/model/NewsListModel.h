#pragma once

#include <string>
#include <vector>

#include "examples/desk/model/Tone.h"

namespace tvk {
class XmlElement;
}

namespace desk {

/// News: the lists that there are, the headlines of one of them, newest first, and the article that is
/// being read. Texts are UTF-8.
class NewsListModel {
public:
    struct List {
        std::string id;
        std::string title;
    };
    struct Headline {
        std::string id;
        std::string time;  ///< YYYYMMDDHHMMSS
        std::string title;
        bool isRead = false;
    };
    enum Column { TIME, TITLE, COLUMN_COUNT };

    /// The root of a master index.
    void setIndex(tvk::XmlElement const & index);
    std::vector<List> const & lists() const { return lists_; }

    /// The root of a list of headlines. One that was read before stays so.
    void setHeadlines(tvk::XmlElement const & list);
    /// One that is new. One that is there already is left alone, and the oldest leaves beyond
    /// HEADLINE_LIMIT.
    void addHeadline(tvk::XmlElement const & headline);
    static constexpr std::size_t HEADLINE_LIMIT = 200;

    int rowCount() const { return static_cast<int>(headlines_.size()); }
    Headline const & headline(int row) const { return headlines_[static_cast<std::size_t>(row)]; }
    std::string text(int row, Column column) const;
    Tone tone(int row, Column column) const;
    /// The user turns to this one: it counts as read from now on.
    void markRead(std::string const & id);
    /// The row of the headline that was turned to last, -1 where it is not here.
    int rowBeingRead() const;

    /// The root of an article.
    void setArticle(tvk::XmlElement const & article);
    /// In the place of an article, where there is none to read.
    void setArticleText(std::string title, std::string body);
    std::string const & articleTitle() const { return articleTitle_; }
    /// Paragraphs with an empty line between them.
    std::string const & articleBody() const { return articleBody_; }

    // Another number after each change of lists and headlines, and of the article.
    unsigned int revision() const { return revision_; }
    unsigned int articleRevision() const { return articleRevision_; }

private:
    bool insert(tvk::XmlElement const & headline);

    std::vector<List> lists_;
    std::vector<Headline> headlines_;
    std::string beingRead_;
    std::string articleTitle_;
    std::string articleBody_;
    unsigned int revision_ = 0;
    unsigned int articleRevision_ = 0;
};

}  // namespace desk
