#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bench/Corpus.h"
#include "bench/Runner.h"
#include "bench/peers/Peers.h"

namespace {

tvk::bench::Peers allPeers() {
    using namespace tvk::bench;
    Peers peers;
    addTvk(peers);
    addTvkAes(peers);
    addTvkAgent(peers);
    addStdUnorderedMap(peers);
    addStdSplit(peers);
#if defined(TVK_BENCH_HAS_RAPIDJSON)
    addRapidJson(peers);
#endif
#if defined(TVK_BENCH_HAS_YAJL)
    addYajl(peers);
#endif
#if defined(TVK_BENCH_HAS_SIMDJSON)
    addSimdjson(peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_JSON)
    addBoostJson(peers);
#endif
#if defined(TVK_BENCH_HAS_NLOHMANN)
    addNlohmann(peers);
#endif
#if defined(TVK_BENCH_HAS_JSONCPP)
    addJsonCpp(peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_FLAT_MAP)
    addBoostFlatMap(peers);
#endif
#if defined(TVK_BENCH_HAS_ICONV)
    addIconv(peers);
#endif
#if defined(TVK_BENCH_HAS_UTFCPP)
    addUtfcpp(peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_LOCALE)
    addBoostLocale(peers);
#endif
#if defined(TVK_BENCH_HAS_OPENSSL)
    addOpenSsl(peers);
#endif
#if defined(TVK_BENCH_HAS_OPENSSL_AES)
    addOpenSslAes(peers);
#endif
#if defined(TVK_BENCH_HAS_NETTLE)
    addNettle(peers);
#endif
#if defined(TVK_BENCH_HAS_NETTLE_AES)
    addNettleAes(peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_HEX)
    addBoostHex(peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_URL)
    addBoostUrl(peers);
#endif
#if defined(TVK_BENCH_HAS_CURL)
    addCurl(peers);
#endif
#if defined(TVK_BENCH_HAS_ABSEIL)
    addAbseil(peers);
#endif
#if defined(TVK_BENCH_HAS_POSIX_TIME)
    addPosixTime(peers);
#endif
#if defined(TVK_BENCH_HAS_FMT)
    addFmt(peers);
#endif
#if defined(TVK_BENCH_HAS_MBEDTLS)
    addMbedTls(peers);
#endif
#if defined(TVK_BENCH_HAS_LIBTOMCRYPT)
    addLibTomCrypt(peers);
#endif
#if defined(TVK_BENCH_HAS_SIGNALS2)
    addSignals2(peers);
#endif
#if defined(TVK_BENCH_HAS_ROAD)
    addTvkRoad(peers);
#if defined(TVK_BENCH_HAS_RAPIDJSON)
    addRapidJsonRoad(peers);
#endif
#endif
#if defined(TVK_BENCH_HAS_XML)
    addTvkXml(peers);
#endif
#if defined(TVK_BENCH_HAS_PUGIXML)
    addPugiXml(peers);
#endif
#if defined(TVK_BENCH_HAS_LIBXML2)
    addLibXml2(peers);
#endif
    return peers;
}

constexpr char USAGE[] =
    "tvk_bench [OPTION]... [ROW]...: runs rows, all unless some are named, and writes what it "
    "measured\n"
    "as an object of JSON a line.\n"
    "  --list          writes the names of all rows instead\n"
    "  --about         writes what it was built with and from instead\n"
    "  --data FOLDER   where trading.ndjson, twitter.json, citm_catalog.json and canada.json are\n"
    "  --rounds N      how often each row is timed (21)\n"
    "  --slice MS      how long each time, in milliseconds (10)\n";

struct Options {
    bool list = false;
    bool about = false;
    tvk::bench::Effort effort;
    std::vector<std::string> rows;
};

std::optional<int> positive(char const * text) {
    char * end = nullptr;
    long const number = std::strtol(text, &end, 10);
    bool const isGood = end != text && *end == '\0' && number > 0 && number < 1000000;
    return isGood ? std::optional(static_cast<int>(number)) : std::nullopt;
}

/// Nothing for arguments that make no sense.
std::optional<Options> optionsOf(std::vector<char const *> const & arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string const argument = arguments[i];
        char const * const value = i + 1 < arguments.size() ? arguments[i + 1] : "";
        if (argument == "--list") {
            options.list = true;
        } else if (argument == "--about") {
            options.about = true;
        } else if (argument == "--data") {
            tvk::bench::setDataFolder(value);
            ++i;
        } else if (argument == "--rounds" && positive(value)) {
            options.effort.rounds = *positive(value);
            ++i;
        } else if (argument == "--slice" && positive(value)) {
            options.effort.slice = std::chrono::milliseconds(*positive(value));
            ++i;
        } else if (argument.starts_with('-')) {
            return std::nullopt;
        } else {
            options.rows.push_back(argument);
        }
    }
    return options;
}

void printTexts(char const * name, std::vector<std::string> const & texts) {
    std::printf("\"%s\": [", name);
    char const * separator = "";
    for (std::string const & text : texts) {
        std::printf("%s\"%s\"", std::exchange(separator, ", "), text.c_str());
    }
    std::printf("]");
}

void printAbout(tvk::bench::Peers const & peers) {
    std::printf("{\"compiler\": \"%s\", \"flags\": \"%s\", ", TVK_BENCH_COMPILER, TVK_BENCH_FLAGS);
    printTexts("libraries", peers.libraries);
    std::printf(", ");
    printTexts("missing", {TVK_BENCH_MISSING});
    std::printf("}\n");
}

void addRows(tvk::bench::Peers const & peers) {
    using namespace tvk::bench;
    addJsonRows(peers);
    addCacheRows(peers);
    addUtf8Rows(peers);
    addCodePageRows(peers);
    addEncoderRows(peers);
    addPercentRows(peers);
    addCipherRows(peers);
    addDateRows(peers);
    addSplitRows(peers);
    addAgentRows(peers);
    addXmlRows(peers);
    addRoadRows(peers);
    addMemoryRows(peers);
}

/// The named rows in the order of the program, or all.
std::vector<tvk::bench::Row> chosen(std::vector<std::string> const & names) {
    std::vector<tvk::bench::Row> rows = tvk::bench::allRows();
    if (!names.empty()) {
        std::erase_if(rows, [&names](tvk::bench::Row const & row) {
            return std::find(names.begin(), names.end(), row.name()) == names.end();
        });
    }
    return rows;
}

}  // namespace

int main(int argc, char ** argv) {
    auto const options = optionsOf({argv + 1, argv + argc});
    if (!options) {
        std::fputs(USAGE, stderr);
        return 2;
    }
    tvk::bench::Peers const peers = allPeers();
    addRows(peers);
    if (options->about) {
        printAbout(peers);
    } else if (options->list) {
        for (tvk::bench::Row const & row : tvk::bench::allRows()) {
            std::puts(row.name().c_str());
        }
    } else {
        tvk::bench::runRows(chosen(options->rows), options->effort, stdout);
    }
    return 0;
}
