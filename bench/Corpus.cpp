#include "bench/Corpus.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "tvk/json/JsonUtil.h"

namespace tvk::bench {

namespace {

std::vector<std::string> & dataFolders() {
    static std::vector<std::string> folders = {TVK_BENCH_DATA, TVK_BENCH_EXAMPLE_DATA};
    return folders;
}

std::filesystem::path pathOf(char const * file) {
    for (std::string const & folder : dataFolders()) {
        if (auto path = std::filesystem::path(folder) / file; std::filesystem::exists(path)) {
            return path;
        }
    }
    throw std::runtime_error(std::string("there is no ") + file + " in the data folder");
}

std::vector<std::string> linesOf(char const * file) {
    std::ifstream input(pathOf(file), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(input, line);) {
        if (!line.empty()) {
            lines.push_back(line);
        }
    }
    return lines;
}

std::vector<std::string> wholeOf(char const * file) {
    std::ifstream input(pathOf(file), std::ios::binary);
    return {std::string(std::istreambuf_iterator<char>(input), {})};
}

Corpus const & twitterCorpus() {
    static Corpus const TWITTER("twitter", wholeOf("twitter.json"));
    return TWITTER;
}

Corpus const & citmCorpus() {
    static Corpus const CITM("citm_catalog", wholeOf("citm_catalog.json"));
    return CITM;
}

Corpus const & canadaCorpus() {
    static Corpus const CANADA("canada", wholeOf("canada.json"));
    return CANADA;
}

}  // namespace

void setDataFolder(std::string folder) { dataFolders() = {std::move(folder)}; }

Corpus::Corpus(std::string name, std::vector<std::string> const & documents)
    : name_(std::move(name)) {
    for (std::string const & document : documents) {
        block_.append(document).append(PADDING, '\0');
        bytes_ += document.size();
        longest_ = std::max(longest_, document.size());
    }
    char const * at = block_.data();
    for (std::string const & document : documents) {
        documents_.emplace_back(at, document.size());
        at += document.size() + PADDING;
    }
}

Corpus const & tradingCorpus() {
    static Corpus const TRADING("trading", linesOf("trading.ndjson"));
    return TRADING;
}

std::vector<CorpusSource> const & corpora() {
    static std::vector<CorpusSource> const ALL = {{"trading", tradingCorpus},
                                                  {"twitter", twitterCorpus},
                                                  {"citm_catalog", citmCorpus},
                                                  {"canada", canadaCorpus}};
    return ALL;
}

void forEachString(Corpus const & corpus,
                   std::function<void(std::uint32_t hash, std::string_view text)> const & take) {
    using Take = std::function<void(std::uint32_t hash, std::string_view text)>;
    static SimpleJsonHandler HANDLER = {
        [](void *) { return 0; },
        [](void *) { return 0; },
        [](void *) { return 0; },
        [](void *) { return 0; },
        [](void *, char const *, unsigned int) { return 0; },
        [](void * user, unsigned int hash, char const * text, unsigned int length) {
            return (*static_cast<Take const *>(user))(hash, {text, length}), 0;
        },
        [](void *, int) { return 0; },
        [](void *) { return 0; },
        [](void *, unsigned int, char const *, unsigned int, char const *, char const *) {
            return 0;
        },
    };
    for (std::string_view const document : corpus.documents()) {
        JsonUtil::parseOneJsonValue(document.data(), static_cast<unsigned int>(document.size()),
                                    &HANDLER, const_cast<Take *>(&take), 0);
    }
}

}  // namespace tvk::bench
