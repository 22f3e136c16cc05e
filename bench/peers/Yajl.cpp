#include <yajl/yajl_version.h>
#include <string>

#include <yajl/yajl_parse.h>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

/// The strings come as slices of the input or of a buffer, not terminated.
struct Scan {
    EventSum * sum;
    std::string scratch;
};

Scan & scanOf(void * context) { return *static_cast<Scan *>(context); }

template <bool HASH>
std::uint32_t take(Scan & scan, char const * text, std::size_t length) {
    if constexpr (!HASH) {
        return 0;
    }
    std::uint32_t const hash = copyAndHash(scan.scratch.data(), text, length);
    scan.scratch[length] = '\0';
    return hash;
}

template <bool HASH>
yajl_callbacks const CALLBACKS = {
    [](void * context) { return scanOf(context).sum->null(), 1; },
    [](void * context, int value) { return scanOf(context).sum->boolean(value != 0), 1; },
    nullptr,
    nullptr,
    [](void * context, char const * text, std::size_t length) {
        return scanOf(context).sum->number(HASH ? hashOf(text, length) : 0, length), 1;
    },
    [](void * context, unsigned char const * text, std::size_t length) {
        Scan & scan = scanOf(context);
        return scan.sum->string(take<HASH>(scan, reinterpret_cast<char const *>(text), length),
                                length),
               1;
    },
    [](void * context) { return scanOf(context).sum->startObject(), 1; },
    [](void * context, unsigned char const * text, std::size_t length) {
        Scan & scan = scanOf(context);
        if constexpr (HASH) {
            scan.scratch.replace(0, length, reinterpret_cast<char const *>(text), length);
        }
        return scan.sum->name(length), 1;
    },
    [](void * context) { return scanOf(context).sum->endObject(), 1; },
    [](void * context) { return scanOf(context).sum->startArray(), 1; },
    [](void * context) { return scanOf(context).sum->endArray(), 1; },
};

/// A handle serves one document, so making and freeing it is part of the work.
template <bool HASH>
class YajlScanner : public Scanner {
public:
    void scan(std::string_view document, EventSum & sum) override {
        scan_.sum = &sum;
        if (scan_.scratch.size() <= document.size()) {
            scan_.scratch.resize(document.size() + 1);
        }
        yajl_handle const handle = yajl_alloc(&CALLBACKS<HASH>, nullptr, &scan_);
        yajl_config(handle, yajl_dont_validate_strings, 1);
        yajl_parse(handle, reinterpret_cast<unsigned char const *>(document.data()),
                   document.size());
        yajl_complete_parse(handle);
        yajl_free(handle);
    }

private:
    Scan scan_{};
};

}  // namespace

void addYajl(Peers & peers) {
    addPeer<YajlScanner<true>>(peers.scanners, "yajl");
    addPeer<YajlScanner<false>>(peers.plainScanners, "yajl");
    peers.libraries.push_back("YAJL " + dotted(YAJL_MAJOR, YAJL_MINOR, YAJL_MICRO));
}

}  // namespace tvk::bench
