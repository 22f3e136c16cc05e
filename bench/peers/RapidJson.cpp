#include <cstring>
#include <string>

#include <rapidjson/document.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

namespace rj = rapidjson;

template <bool HASH>
struct EventHandler : rj::BaseReaderHandler<rj::UTF8<>, EventHandler<HASH>> {
    EventSum & sum;

    explicit EventHandler(EventSum & eventSum) : sum(eventSum) {}

    static std::uint32_t hash(char const * text, rj::SizeType length) {
        return HASH ? hashOf(text, length) : 0;
    }

    bool StartObject() { return sum.startObject(), true; }
    bool EndObject(rj::SizeType) { return sum.endObject(), true; }
    bool StartArray() { return sum.startArray(), true; }
    bool EndArray(rj::SizeType) { return sum.endArray(), true; }
    bool Key(char const *, rj::SizeType length, bool) { return sum.name(length), true; }
    bool String(char const * text, rj::SizeType length, bool) {
        return sum.string(hash(text, length), length), true;
    }
    bool RawNumber(char const * text, rj::SizeType length, bool) {
        return sum.number(hash(text, length), length), true;
    }
    bool Bool(bool value) { return sum.boolean(value), true; }
    bool Null() { return sum.null(), true; }
};

template <bool HASH>
class ReaderScanner : public Scanner {
public:
    void scan(std::string_view document, EventSum & sum) override {
        EventHandler<HASH> handler(sum);
        rj::StringStream stream(document.data());
        reader_.Parse<rj::kParseNumbersAsStringsFlag | rj::kParseStopWhenDoneFlag>(stream, handler);
    }

private:
    rj::Reader reader_;
};

/// A text that may be written to, terminated.
class Scratch {
public:
    char * copyOf(std::string_view document) {
        if (text_.size() <= document.size()) {
            text_.resize(document.size() + 1);
        }
        std::memcpy(text_.data(), document.data(), document.size());
        text_[document.size()] = '\0';
        return text_.data();
    }

private:
    std::string text_;
};

/// The copy of the text, which parsing in place destroys, is part of the work.
template <bool HASH>
class InPlaceScanner : public Scanner {
public:
    void scan(std::string_view document, EventSum & sum) override {
        EventHandler<HASH> handler(sum);
        rj::InsituStringStream stream(scratch_.copyOf(document));
        reader_.Parse<rj::kParseNumbersAsStringsFlag | rj::kParseInsituFlag |
                      rj::kParseStopWhenDoneFlag>(stream, handler);
    }

private:
    rj::Reader reader_;
    Scratch scratch_;
};

template <class Value>
std::uint64_t sumOfValue(Value const & value) {
    std::uint64_t sum = 0;
    switch (value.GetType()) {
        case rj::kObjectType:
            sum = TreeSum::EMPTY_RECORD;
            for (auto const & member : value.GetObject()) {
                sum += TreeSum::ofMember({member.name.GetString(), member.name.GetStringLength()},
                                         sumOfValue(member.value));
            }
            return sum;
        case rj::kArrayType:
            sum = TreeSum::EMPTY_LIST;
            for (auto const & element : value.GetArray()) {
                sum = TreeSum::ofElement(sum, sumOfValue(element));
            }
            return sum;
        case rj::kStringType:
            return TreeSum::ofText({value.GetString(), value.GetStringLength()});
        case rj::kNumberType:
            return TreeSum::ofNumber(value.GetDouble());
        case rj::kNullType:
            return 0;
        default:
            return TreeSum::ofBoolean(value.GetBool());
    }
}

class FreshPoolReader : public Reader {
public:
    void read(std::string_view document) override {
        rj::Document tree;
        tree.Parse(document.data(), document.size());
    }
    std::uint64_t sum(std::string_view document) override {
        rj::Document tree;
        tree.Parse(document.data(), document.size());
        return sumOfValue(tree);
    }
};

using Pool = rj::MemoryPoolAllocator<>;
using PoolDocument = rj::GenericDocument<rj::UTF8<>, Pool, Pool>;

/// Both pools keep their first block from document to document.
template <bool IN_PLACE>
class ReusedPoolReader : public Reader {
public:
    bool hasSizedPool() const override { return true; }
    void read(std::string_view document) override {
        {
            PoolDocument tree(&values_, STACK_CAPACITY, &stack_);
            parse(tree, document);
        }
        clear();
    }
    std::uint64_t sum(std::string_view document) override {
        std::uint64_t sum = 0;
        {
            PoolDocument tree(&values_, STACK_CAPACITY, &stack_);
            parse(tree, document);
            sum = sumOfValue(tree);
        }
        clear();
        return sum;
    }

private:
    static constexpr std::size_t BLOCK_SIZE = std::size_t(16) << 20;
    static constexpr std::size_t STACK_CAPACITY = 4096;

    void parse(PoolDocument & tree, std::string_view document) {
        if constexpr (IN_PLACE) {
            tree.ParseInsitu(scratch_.copyOf(document));
        } else {
            tree.Parse(document.data(), document.size());
        }
    }
    void clear() {
        values_.Clear();
        stack_.Clear();
    }

    std::vector<char> valueBlock_ = std::vector<char>(BLOCK_SIZE);
    std::vector<char> stackBlock_ = std::vector<char>(BLOCK_SIZE);
    Pool values_{valueBlock_.data(), valueBlock_.size()};
    Pool stack_{stackBlock_.data(), stackBlock_.size()};
    Scratch scratch_;
};

/// A pool a message, as a Document has it by itself.
class DocumentKeeper : public Keeper {
public:
    void reserve(std::size_t messages) override { trees_.reserve(messages); }
    void add(std::string_view document) override {
        trees_.emplace_back().Parse(document.data(), document.size());
    }
    std::uint64_t sum(std::size_t index) override { return sumOfValue(trees_[index]); }

private:
    std::vector<rj::Document> trees_;
};

/// One pool for all, which gives nothing back before its end.
class SharedPoolKeeper : public Keeper {
public:
    void reserve(std::size_t messages) override { trees_.reserve(messages); }
    void add(std::string_view document) override {
        rj::Document tree(&pool_);
        tree.Parse(document.data(), document.size());
        trees_.emplace_back() = static_cast<rj::Value &>(tree);  // moves it
    }
    std::uint64_t sum(std::size_t index) override { return sumOfValue(trees_[index]); }

private:
    Pool pool_;
    std::vector<rj::Value> trees_;
};

class BufferWriter : public Writer {
public:
    void load(std::vector<std::string_view> const & documents) override {
        for (std::string_view const document : documents) {
            trees_.emplace_back(std::make_unique<rj::Document>());
            trees_.back()->Parse(document.data(), document.size());
        }
    }
    std::string_view write(std::size_t index) override {
        buffer_.Clear();
        rj::Writer<rj::StringBuffer> writer(buffer_);
        trees_[index]->Accept(writer);
        return {buffer_.GetString(), buffer_.GetSize()};
    }

private:
    std::vector<std::unique_ptr<rj::Document>> trees_;
    rj::StringBuffer buffer_;
};

}  // namespace

void addRapidJson(Peers & peers) {
    addPeer<InPlaceScanner<true>>(peers.scanners, "rapidjson_insitu");
    addPeer<ReaderScanner<true>>(peers.scanners, "rapidjson");
    addPeer<InPlaceScanner<false>>(peers.plainScanners, "rapidjson_insitu");
    addPeer<ReaderScanner<false>>(peers.plainScanners, "rapidjson");
    addPeer<ReusedPoolReader<false>>(peers.readers, "rapidjson_pool");
    addPeer<ReusedPoolReader<true>>(peers.readers, "rapidjson_insitu_pool");
    addPeer<FreshPoolReader>(peers.readers, "rapidjson");
    addPeer<DocumentKeeper>(peers.keepers, "rapidjson");
    addPeer<SharedPoolKeeper>(peers.keepers, "rapidjson_pool");
    addPeer<BufferWriter>(peers.writers, "rapidjson");
    peers.libraries.push_back("RapidJSON " RAPIDJSON_VERSION_STRING);
}

}  // namespace tvk::bench
