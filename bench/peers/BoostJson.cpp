#include <boost/version.hpp>
#include <string>

#include <boost/json.hpp>
#include <boost/json/basic_parser_impl.hpp>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

namespace bj = boost::json;

/// Texts come in parts, which are joined in the scratch buffer. Without a hash nobody looks at them, and they
/// are left where they are.
template <bool HASH>
struct EventHandler {
    static constexpr std::size_t max_object_size = std::size_t(-1);
    static constexpr std::size_t max_array_size = std::size_t(-1);
    static constexpr std::size_t max_key_size = std::size_t(-1);
    static constexpr std::size_t max_string_size = std::size_t(-1);

    EventSum * sum = nullptr;
    std::string scratch;
    std::uint32_t hash = 0;
    std::size_t length = 0;

    void part(bj::string_view text) {
        if constexpr (!HASH) {
            length += text.size();
            return;
        }
        hash = length == 0 ? copyAndHash(scratch.data(), text.data(), text.size())
                           : copyAndHash(scratch.data() + length, text.data(), text.size(), hash);
        length += text.size();
    }
    std::size_t endOfText() {
        if constexpr (HASH) {
            scratch[length] = '\0';
        }
        return std::exchange(length, 0);
    }

    bool on_document_begin(bj::error_code &) { return true; }
    bool on_document_end(bj::error_code &) { return true; }
    bool on_object_begin(bj::error_code &) { return sum->startObject(), true; }
    bool on_object_end(std::size_t, bj::error_code &) { return sum->endObject(), true; }
    bool on_array_begin(bj::error_code &) { return sum->startArray(), true; }
    bool on_array_end(std::size_t, bj::error_code &) { return sum->endArray(), true; }
    bool on_key_part(bj::string_view text, std::size_t, bj::error_code &) {
        if constexpr (HASH) {
            scratch.replace(length, text.size(), text.data(), text.size());
        }
        length += text.size();
        return true;
    }
    bool on_key(bj::string_view text, std::size_t, bj::error_code & error) {
        on_key_part(text, 0, error);
        return sum->name(endOfText()), true;
    }
    bool on_string_part(bj::string_view text, std::size_t, bj::error_code &) {
        return part(text), true;
    }
    bool on_string(bj::string_view text, std::size_t, bj::error_code &) {
        part(text);
        std::uint32_t const whole = hash;
        return sum->string(whole, endOfText()), true;
    }
    bool on_number_part(bj::string_view text, bj::error_code &) { return part(text), true; }
    bool number(bj::string_view text) {
        part(text);
        std::uint32_t const whole = hash;
        return sum->number(whole, endOfText()), true;
    }
    bool on_int64(std::int64_t, bj::string_view text, bj::error_code &) { return number(text); }
    bool on_uint64(std::uint64_t, bj::string_view text, bj::error_code &) { return number(text); }
    bool on_double(double, bj::string_view text, bj::error_code &) { return number(text); }
    bool on_bool(bool value, bj::error_code &) { return sum->boolean(value), true; }
    bool on_null(bj::error_code &) { return sum->null(), true; }
    bool on_comment_part(bj::string_view, bj::error_code &) { return true; }
    bool on_comment(bj::string_view, bj::error_code &) { return true; }
};

template <bool HASH>
class BasicParserScanner : public Scanner {
public:
    void scan(std::string_view document, EventSum & sum) override {
        EventHandler<HASH> & handler = parser_.handler();
        handler.sum = &sum;
        if (handler.scratch.size() <= document.size()) {
            handler.scratch.resize(document.size() + 1);
        }
        bj::error_code error;
        parser_.reset();
        parser_.write_some(false, document.data(), document.size(), error);
    }

private:
    bj::basic_parser<EventHandler<HASH>> parser_{bj::parse_options()};
};

std::uint64_t sumOfValue(bj::value const & value) {
    std::uint64_t sum = 0;
    switch (value.kind()) {
        case bj::kind::object:
            sum = TreeSum::EMPTY_RECORD;
            for (bj::key_value_pair const & member : value.get_object()) {
                sum += TreeSum::ofMember({member.key().data(), member.key().size()},
                                         sumOfValue(member.value()));
            }
            return sum;
        case bj::kind::array:
            sum = TreeSum::EMPTY_LIST;
            for (bj::value const & element : value.get_array()) {
                sum = TreeSum::ofElement(sum, sumOfValue(element));
            }
            return sum;
        case bj::kind::string:
            return TreeSum::ofText({value.get_string().data(), value.get_string().size()});
        case bj::kind::bool_:
            return TreeSum::ofBoolean(value.get_bool());
        case bj::kind::null:
            return 0;
        default:
            return TreeSum::ofNumber(value.to_number<double>());
    }
}

class DefaultReader : public Reader {
public:
    void read(std::string_view document) override {
        bj::value const tree = bj::parse({document.data(), document.size()});
    }
    std::uint64_t sum(std::string_view document) override {
        return sumOfValue(bj::parse({document.data(), document.size()}));
    }
};

/// A parser and a block of memory that are kept from document to document.
class PoolReader : public Reader {
public:
    bool hasSizedPool() const override { return true; }
    void read(std::string_view document) override { parse(document, nullptr); }
    std::uint64_t sum(std::string_view document) override {
        std::uint64_t sum = 0;
        parse(document, &sum);
        return sum;
    }

private:
    void parse(std::string_view document, std::uint64_t * sum) {
        bj::monotonic_resource pool(block_.data(), block_.size());
        parser_.reset(&pool);
        parser_.write(document.data(), document.size());
        bj::value const tree = parser_.release();
        if (sum != nullptr) {
            *sum = sumOfValue(tree);
        }
    }

    std::vector<unsigned char> block_ = std::vector<unsigned char>(std::size_t(16) << 20);
    bj::parser parser_;
};

class TreeKeeper : public Keeper {
public:
    void reserve(std::size_t messages) override { trees_.reserve(messages); }
    void add(std::string_view document) override {
        trees_.push_back(bj::parse({document.data(), document.size()}));
    }
    std::uint64_t sum(std::size_t index) override { return sumOfValue(trees_[index]); }

private:
    std::vector<bj::value> trees_;
};

class BufferWriter : public Writer {
public:
    void load(std::vector<std::string_view> const & documents) override {
        std::size_t longest = 0;
        for (std::string_view const document : documents) {
            trees_.push_back(bj::parse({document.data(), document.size()}));
            longest = std::max(longest, document.size());
        }
        // Numbers may come out longer than they went in.
        text_.resize(longest * 2 + 1024);
    }
    std::string_view write(std::size_t index) override {
        serializer_.reset(&trees_[index]);
        bj::string_view const text = serializer_.read(text_.data(), text_.size());
        return {text.data(), text.size()};
    }

private:
    std::vector<bj::value> trees_;
    bj::serializer serializer_;
    std::string text_;
};

}  // namespace

void addBoostJson(Peers & peers) {
    addPeer<BasicParserScanner<true>>(peers.scanners, "boost_basic_parser");
    addPeer<BasicParserScanner<false>>(peers.plainScanners, "boost_basic_parser");
    addPeer<PoolReader>(peers.readers, "boost_json_pool");
    addPeer<DefaultReader>(peers.readers, "boost_json");
    addPeer<TreeKeeper>(peers.keepers, "boost_json");
    addPeer<BufferWriter>(peers.writers, "boost_json");
    peers.libraries.push_back(std::string("Boost.JSON ") + BOOST_LIB_VERSION);
}

}  // namespace tvk::bench
