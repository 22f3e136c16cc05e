#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace backend {

/// News as XML in UTF-8, without a declaration, made up from a seed.
///
///     index     <index><list id="market" title=".."/>..</index>
///     list      <list id="market"><headline id="N0001" time="YYYYMMDDHHMMSS" title=".."/>..</list>,
///               the latest first
///     article   <article id="N0001" time=".." list="market"><title>..</title>
///               <body><p>..</p>..</body></article>
class News {
public:
    static constexpr std::size_t KEPT = 200;  ///< articles; the oldest go first

    /// Begins with some articles of the hours before `now`, in milliseconds since 1970.
    News(unsigned int seed, long long now);

    /// By tvk's types of documents; none where there is no such document. The index has any identifier.
    std::optional<std::string> document(long long type, std::string_view id) const;
    /// Writes one more article, and returns its <headline/>.
    std::string write(long long now);

private:
    struct Article {
        std::string id;
        std::string time;
        std::size_t list = 0;
        std::string title;
        std::string company;
    };

    static std::string headlineOf(Article const & article);
    static std::string textOf(Article const & article);
    std::string listOf(std::size_t list) const;
    std::size_t pick(std::size_t choices);

    std::mt19937 random_;
    std::deque<Article> articles_;  // the latest first
    unsigned int lastId_ = 0;
};

/// Text as it stands in XML, between tags or in quotes: the five characters that mean something there
/// are escaped, and control characters, which may not stand there at all, become blanks.
std::string xmlEscaped(std::string_view text);

}  // namespace backend
