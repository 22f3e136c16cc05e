#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tvk::bench {

/// Documents that are measured together, one behind the other in one block of memory.
class Corpus {
public:
    /// Zero bytes behind each document; simdjson wants them, and nobody reads the next document.
    static constexpr std::size_t PADDING = 64;

    Corpus(std::string name, std::vector<std::string> const & documents);

    std::string const & name() const { return name_; }
    std::vector<std::string_view> const & documents() const { return documents_; }
    std::size_t bytes() const { return bytes_; }
    std::size_t longest() const { return longest_; }

private:
    std::string name_;
    std::string block_;
    std::vector<std::string_view> documents_;
    std::size_t bytes_ = 0;
    std::size_t longest_ = 0;
};

/// A corpus that is made when it is first asked for.
struct CorpusSource {
    char const * name;
    Corpus const & (*get)();
};

/// Where the corpora are, if not in the folders of this project.
void setDataFolder(std::string folder);

/// The corpora of the data folder: `trading`, one message a line, and the three files that JSON
/// libraries are usually measured with. Getting one throws std::runtime_error if its file is missing.
std::vector<CorpusSource> const & corpora();
Corpus const & tradingCorpus();

/// The string values of a corpus in their order, with the hashes that tvk's scanner gives them.
void forEachString(Corpus const & corpus,
                   std::function<void(std::uint32_t hash, std::string_view text)> const & take);

}  // namespace tvk::bench
