#pragma once

#include "bench/Work.h"

/// One function a source file beside this header. Those whose library is not there are not built.
namespace tvk::bench {

void addTvk(Peers & peers);
void addTvkAes(Peers & peers);
void addTvkAgent(Peers & peers);
void addStdUnorderedMap(Peers & peers);
void addStdSplit(Peers & peers);
#if defined(TVK_BENCH_HAS_RAPIDJSON)
void addRapidJson(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_YAJL)
void addYajl(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_SIMDJSON)
void addSimdjson(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_JSON)
void addBoostJson(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_NLOHMANN)
void addNlohmann(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_JSONCPP)
void addJsonCpp(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_FLAT_MAP)
void addBoostFlatMap(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_ICONV)
void addIconv(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_UTFCPP)
void addUtfcpp(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_LOCALE)
void addBoostLocale(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_OPENSSL)
void addOpenSsl(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_OPENSSL_AES)
void addOpenSslAes(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_NETTLE)
void addNettle(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_NETTLE_AES)
void addNettleAes(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_HEX)
void addBoostHex(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_BOOST_URL)
void addBoostUrl(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_CURL)
void addCurl(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_ABSEIL)
void addAbseil(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_POSIX_TIME)
void addPosixTime(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_FMT)
void addFmt(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_MBEDTLS)
void addMbedTls(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_LIBTOMCRYPT)
void addLibTomCrypt(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_SIGNALS2)
void addSignals2(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_ROAD)
void addTvkRoad(Peers & peers);
#if defined(TVK_BENCH_HAS_RAPIDJSON)
void addRapidJsonRoad(Peers & peers);
#endif
#endif
#if defined(TVK_BENCH_HAS_XML)
void addTvkXml(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_PUGIXML)
void addPugiXml(Peers & peers);
#endif
#if defined(TVK_BENCH_HAS_LIBXML2)
void addLibXml2(Peers & peers);
#endif

}  // namespace tvk::bench
