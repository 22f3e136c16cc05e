#include "examples/backend/News.h"

#include <algorithm>
#include <array>

#include "examples/backend/MarketTime.h"
#include "examples/backend/Numbered.h"
#include "examples/backend/Symbols.h"
#include "tvk/agent/XmlNewsService.h"

namespace backend {

namespace {

struct List {
    std::string_view id;
    std::string_view title;
};

constexpr std::array<List, 3> LISTS = {
    {{"market", "市況"}, {"company", "企業"}, {"economy", "経済"}}};

/// A title, with % for the name of a company.
struct Template {
    std::size_t list;
    std::string_view title;
};

constexpr std::array<Template, 10> TEMPLATES = {{
    {0, "寄り付き：%に買い先行、出来高増える"},
    {0, "前場：%が小幅高、全体は様子見"},
    {0, "大引け：%が反発、<上値>は重い"},
    {1, "%、通期の業績見通しを上方修正"},
    {1, "%、\"次世代\"製品を来春発売"},
    {1, "%、R&D拠点を新設へ"},
    {1, "%、自社株買いを発表"},
    {2, "景気指数が2カ月ぶり改善、%など恩恵"},
    {2, "円相場が小動き、%の採算に安心感"},
    {2, "消費は底堅く推移、%も増産"},
}};

constexpr std::size_t FIRST_ARTICLES = 12;
constexpr long long MILLISEC_BETWEEN_THEM = 11LL * 60 * 1000;

std::string attribute(std::string_view name, std::string_view value) {
    std::string xml(" ");
    xml += name;
    xml += "=\"";
    xml += xmlEscaped(value);
    xml += '"';
    return xml;
}

std::string element(std::string_view name, std::string_view text) {
    std::string const tag(name);
    return "<" + tag + ">" + xmlEscaped(text) + "</" + tag + ">";
}

std::string indexOfLists() {
    std::string xml = "<index>";
    for (List const & list : LISTS) {
        xml += "<list" + attribute("id", list.id) + attribute("title", list.title) + "/>";
    }
    return xml + "</index>";
}

std::string_view escapeOf(char character) {
    switch (character) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&apos;";
        default:
            return {};
    }
}

}  // namespace

std::string xmlEscaped(std::string_view text) {
    std::string xml;
    xml.reserve(text.size());
    for (char const character : text) {
        std::string_view const escape = escapeOf(character);
        if (!escape.empty()) {
            xml += escape;
        } else {
            bool const isControl = static_cast<unsigned char>(character) < ' ';
            xml += isControl ? ' ' : character;
        }
    }
    return xml;
}

News::News(unsigned int seed, long long now) : random_(seed) {
    for (std::size_t left = FIRST_ARTICLES; left > 0; --left) {
        write(now - static_cast<long long>(left) * MILLISEC_BETWEEN_THEM);
    }
}

std::optional<std::string> News::document(long long type, std::string_view id) const {
    if (type == tvk::XmlNewsService::TYPE_MASTER_INDEX) {
        return indexOfLists();
    }
    if (type == tvk::XmlNewsService::TYPE_HEADER_LINE) {
        auto const list = std::find_if(LISTS.begin(), LISTS.end(),
                                       [id](List const & other) { return other.id == id; });
        return list == LISTS.end()
                   ? std::nullopt
                   : std::optional(listOf(static_cast<std::size_t>(list - LISTS.begin())));
    }
    if (type == tvk::XmlNewsService::TYPE_DETAIL) {
        auto const article = std::find_if(articles_.begin(), articles_.end(),
                                          [id](Article const & other) { return other.id == id; });
        return article == articles_.end() ? std::nullopt : std::optional(textOf(*article));
    }
    return std::nullopt;
}

std::string News::write(long long now) {
    Template const & chosen = TEMPLATES[pick(TEMPLATES.size())];
    std::string const company(SYMBOLS[pick(SYMBOLS.size())].name);
    std::string title(chosen.title);
    title.replace(title.find('%'), 1, company);
    articles_.push_front(
        {numbered('N', ++lastId_), dateTimeTextOf(now), chosen.list, title, company});
    if (articles_.size() > KEPT) {
        articles_.pop_back();
    }
    return headlineOf(articles_.front());
}

std::string News::headlineOf(Article const & article) {
    return "<headline" + attribute("id", article.id) + attribute("time", article.time) +
           attribute("title", article.title) + "/>";
}

std::string News::textOf(Article const & article) {
    return "<article" + attribute("id", article.id) + attribute("time", article.time) +
           attribute("list", LISTS[article.list].id) + ">" + element("title", article.title) +
           "<body>" +
           element("p", article.company + "をめぐる動きが注目されている。" +
                            "市場関係者は「数字は想定の範囲内」と話した。") +
           element(
               "p",
               "先行きについては、為替と資源の動向をにらみ、慎重な見方と強気な見方が交錯する。") +
           element("p", "本文はすべて架空のものです。") + "</body></article>";
}

std::string News::listOf(std::size_t list) const {
    std::string xml = "<list" + attribute("id", LISTS[list].id) + ">";
    for (Article const & article : articles_) {
        if (article.list == list) {
            xml += headlineOf(article);
        }
    }
    return xml + "</list>";
}

std::size_t News::pick(std::size_t choices) { return random_() % choices; }

}  // namespace backend
