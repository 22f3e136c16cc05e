#include <string>

#include <simdjson.h>

#include "bench/Corpus.h"
#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

namespace od = simdjson::ondemand;
namespace dom = simdjson::dom;

std::string_view trimmed(std::string_view token) {
    while (!token.empty() && static_cast<unsigned char>(token.back()) <= ' ') {
        token.remove_suffix(1);
    }
    return token;
}

template <bool HASH>
std::uint32_t hash(std::string_view text) {
    return HASH ? hashOf(text.data(), text.size()) : 0;
}

template <bool HASH, class Value>
void walk(Value && value, EventSum & sum) {
    switch (value.type().value()) {
        case od::json_type::object:
            sum.startObject();
            for (auto field : value.get_object()) {
                std::string_view const name = field.unescaped_key();
                sum.name(name.size());
                walk<HASH>(field.value().value(), sum);
            }
            sum.endObject();
            break;
        case od::json_type::array:
            sum.startArray();
            for (auto element : value.get_array()) {
                walk<HASH>(element.value(), sum);
            }
            sum.endArray();
            break;
        case od::json_type::string: {
            std::string_view const text = value.get_string();
            sum.string(hash<HASH>(text), text.size());
            break;
        }
        case od::json_type::number: {
            std::string_view const text = trimmed(value.raw_json_token());
            sum.number(hash<HASH>(text), text.size());
            break;
        }
        case od::json_type::boolean:
            sum.boolean(value.get_bool());
            break;
        default:
            sum.null();
            break;
    }
}

template <bool HASH>
class OnDemandScanner : public Scanner {
public:
    void scan(std::string_view document, EventSum & sum) override {
        od::document tree =
            parser_.iterate(document.data(), document.size(), document.size() + Corpus::PADDING);
        walk<HASH>(tree, sum);
    }

private:
    od::parser parser_;
};

std::uint64_t sumOfValue(dom::element const & value) {
    std::uint64_t sum = 0;
    switch (value.type()) {
        case dom::element_type::OBJECT:
            sum = TreeSum::EMPTY_RECORD;
            for (dom::key_value_pair const & member : dom::object(value)) {
                sum += TreeSum::ofMember(member.key, sumOfValue(member.value));
            }
            return sum;
        case dom::element_type::ARRAY:
            sum = TreeSum::EMPTY_LIST;
            for (dom::element const & element : dom::array(value)) {
                sum = TreeSum::ofElement(sum, sumOfValue(element));
            }
            return sum;
        case dom::element_type::STRING:
            return TreeSum::ofText(std::string_view(value));
        case dom::element_type::BOOL:
            return TreeSum::ofBoolean(bool(value));
        case dom::element_type::NULL_VALUE:
            return 0;
        default:
            return TreeSum::ofNumber(double(value));
    }
}

/// A tape rather than a tree; it is overwritten by the next document.
class DomReader : public Reader {
public:
    void read(std::string_view document) override {
        if (parse(document).error() != simdjson::SUCCESS) {
            throw "simdjson refuses the document";
        }
    }
    std::uint64_t sum(std::string_view document) override {
        return sumOfValue(parse(document).value());
    }

private:
    simdjson::simdjson_result<dom::element> parse(std::string_view document) {
        return parser_.parse(document.data(), document.size(), false);
    }

    dom::parser parser_;
};

/// A parser a message: a parser keeps one document.
class DomKeeper : public Keeper {
public:
    void reserve(std::size_t messages) override { parsers_.reserve(messages); }
    void add(std::string_view document) override {
        parsers_.push_back(std::make_unique<dom::parser>());
        if (parsers_.back()->parse(document.data(), document.size(), false).error() !=
            simdjson::SUCCESS) {
            throw "simdjson refuses the document";
        }
    }
    std::uint64_t sum(std::size_t index) override {
        return sumOfValue(parsers_[index]->doc.root());
    }

private:
    std::vector<std::unique_ptr<dom::parser>> parsers_;
};

class DomWriter : public Writer {
public:
    void load(std::vector<std::string_view> const & documents) override {
        for (std::string_view const document : documents) {
            parsers_.push_back(std::make_unique<dom::parser>());
            trees_.push_back(
                parsers_.back()->parse(document.data(), document.size(), false).value());
        }
    }
    std::string_view write(std::size_t index) override {
        text_ = simdjson::minify(trees_[index]);
        return text_;
    }

private:
    std::vector<std::unique_ptr<dom::parser>> parsers_;
    std::vector<dom::element> trees_;
    std::string text_;
};

}  // namespace

void addSimdjson(Peers & peers) {
    addPeer<OnDemandScanner<true>>(peers.scanners, "simdjson_ondemand");
    addPeer<OnDemandScanner<false>>(peers.plainScanners, "simdjson_ondemand");
    addPeer<DomReader>(peers.readers, "simdjson_dom");
    addPeer<DomKeeper>(peers.keepers, "simdjson_dom");
    addPeer<DomWriter>(peers.writers, "simdjson_dom");
    peers.libraries.push_back("simdjson " + dotted(simdjson::SIMDJSON_VERSION_MAJOR,
                                                   simdjson::SIMDJSON_VERSION_MINOR,
                                                   simdjson::SIMDJSON_VERSION_REVISION));
}

}  // namespace tvk::bench
