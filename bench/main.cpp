#include <benchmark/benchmark.h>

#include "bench/Rows.h"
#include "bench/peers/AesInstructions.h"
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

}  // namespace

int main(int argc, char ** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    tvk::bench::Peers const peers = allPeers();
    if (!tvk::bench::isWithoutAesInstructions()) {
        tvk::bench::addJsonRows(peers);
        tvk::bench::addCacheRows(peers);
        tvk::bench::addCodePageRows(peers);
        tvk::bench::addUtf8Rows(peers);
        tvk::bench::addEncoderRows(peers);
        tvk::bench::addPercentRows(peers);
        tvk::bench::addDateRows(peers);
        tvk::bench::addSplitRows(peers);
        tvk::bench::addAgentRows(peers);
        tvk::bench::addXmlRows(peers);
    }
    tvk::bench::addCipherRows(peers);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
