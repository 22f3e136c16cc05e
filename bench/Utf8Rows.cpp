#include "bench/Rows.h"
#include "bench/TextSamples.h"

namespace tvk::bench {

namespace {

struct Sample {
    char const * name;
    Corpus const & (*corpus)();
};

/// `work` gives a number that all decoders must agree on.
template <class Work>
void addUtf8Row(Peers const & peers, Peer<Utf8Decoder> const & peer, std::string const & group,
                Sample sample, Work work) {
    addRow(group + '/' + sample.name, peer.name, [&, sample, work]() -> TimedWork {
        std::string_view const text = sample.corpus().documents().front();
        std::shared_ptr<Utf8Decoder> const decoder = peer.make();
        auto const reference = peers.utf8Decoders.front().make();
        requireAgreement(work(*decoder, text) == work(*reference, text));
        return {{text.size(), 1}, [decoder, text, work] { keep(work(*decoder, text)); }};
    });
}

}  // namespace

void addUtf8Rows(Peers const & peers) {
    auto const decode = [](Utf8Decoder & decoder, std::string_view text) {
        return decoder.decode(text);
    };
    auto const count = [](Utf8Decoder & decoder, std::string_view text) {
        return decoder.count(text);
    };
    for (Sample const sample : {Sample{"japanese", japaneseText}, Sample{"messages", mixedText}}) {
        for (Peer<Utf8Decoder> const & peer : peers.utf8Decoders) {
            addUtf8Row(peers, peer, "utf8_decode", sample, decode);
            if (peer.make()->counts()) {
                addUtf8Row(peers, peer, "utf8_count", sample, count);
            }
        }
    }
}

}  // namespace tvk::bench
