#include "bench/Rows.h"
#include "bench/TextSamples.h"

namespace tvk::bench {

namespace {

using Conversion = std::string_view (CodePageConverter::*)(std::string_view);

std::vector<std::string> convertAll(CodePageConverter & converter, Conversion conversion,
                                    Corpus const & corpus) {
    std::vector<std::string> texts;
    for (std::string_view const text : corpus.documents()) {
        texts.emplace_back((converter.*conversion)(text));
    }
    return texts;
}

using CorpusMaker = std::function<std::unique_ptr<Corpus>()>;

void addRows(Peers const & peers, std::string const & group, Conversion conversion,
             CorpusMaker const & makeCorpus) {
    auto const corpus = std::make_shared<Lazy<std::unique_ptr<Corpus>>>(makeCorpus);
    auto const wanted =
        std::make_shared<Lazy<std::vector<std::string>>>([&peers, corpus, conversion] {
            return convertAll(*peers.codePageConverters.front().make(), conversion, *corpus->get());
        });
    for (Peer<CodePageConverter> const & peer : peers.codePageConverters) {
        addRow(group, peer.name, [&, corpus, conversion, wanted]() -> TimedWork {
            Corpus const & texts = *corpus->get();
            std::shared_ptr<CodePageConverter> const converter = peer.make();
            requireAgreement(convertAll(*converter, conversion, texts) == wanted->get());
            return {{texts.bytes(), texts.documents().size()},
                    [corpus, &texts, converter, conversion] {
                        for (std::string_view const text : texts.documents()) {
                            keep(((*converter).*conversion)(text));
                        }
                    }};
        });
    }
}

}  // namespace

void addCodePageRows(Peers const & peers) {
    struct Sample {
        char const * name;
        Corpus const & (*corpus)();
    };
    for (Sample const sample : {Sample{"japanese", japaneseText}, Sample{"messages", mixedText},
                                Sample{"names", shortTexts}}) {
        addRows(peers, std::string("to_932/") + sample.name, &CodePageConverter::toCodePage,
                [sample] { return std::make_unique<Corpus>(sample.corpus()); });
        addRows(peers, std::string("from_932/") + sample.name, &CodePageConverter::toUtf8,
                [sample, &peers] {
                    auto const converter = peers.codePageConverters.front().make();
                    return std::make_unique<Corpus>(
                        sample.name,
                        convertAll(*converter, &CodePageConverter::toCodePage, sample.corpus()));
                });
    }
}

}  // namespace tvk::bench
