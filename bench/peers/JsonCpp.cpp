#include <sstream>
#include <string>

#include <json/json.h>

#include "bench/peers/Peers.h"

namespace tvk::bench {

namespace {

std::string_view textOf(Json::Value const & value) {
    char const * begin = nullptr;
    char const * end = nullptr;
    value.getString(&begin, &end);
    return {begin, static_cast<std::size_t>(end - begin)};
}

std::uint64_t sumOfValue(Json::Value const & value) {
    std::uint64_t sum = 0;
    switch (value.type()) {
        case Json::objectValue:
            sum = TreeSum::EMPTY_RECORD;
            for (auto member = value.begin(); member != value.end(); ++member) {
                sum += TreeSum::ofMember(member.name(), sumOfValue(*member));
            }
            return sum;
        case Json::arrayValue:
            sum = TreeSum::EMPTY_LIST;
            for (Json::Value const & element : value) {
                sum = TreeSum::ofElement(sum, sumOfValue(element));
            }
            return sum;
        case Json::stringValue:
            return TreeSum::ofText(textOf(value));
        case Json::booleanValue:
            return TreeSum::ofBoolean(value.asBool());
        case Json::nullValue:
            return 0;
        default:
            return TreeSum::ofNumber(value.asDouble());
    }
}

/// One reader object for all documents.
class TreeReader : public Reader {
public:
    void read(std::string_view document) override {
        Json::Value tree;
        parse(document, tree);
    }
    std::uint64_t sum(std::string_view document) override {
        Json::Value tree;
        parse(document, tree);
        return sumOfValue(tree);
    }

private:
    void parse(std::string_view document, Json::Value & tree) {
        reader_->parse(document.data(), document.data() + document.size(), &tree, nullptr);
    }

    std::unique_ptr<Json::CharReader> reader_{Json::CharReaderBuilder().newCharReader()};
};

class TreeKeeper : public Keeper {
public:
    void reserve(std::size_t messages) override { trees_.reserve(messages); }
    void add(std::string_view document) override {
        reader_->parse(document.data(), document.data() + document.size(), &trees_.emplace_back(),
                       nullptr);
    }
    void endFeed() override { reader_.reset(); }
    std::uint64_t sum(std::size_t index) override { return sumOfValue(trees_[index]); }

private:
    std::unique_ptr<Json::CharReader> reader_{Json::CharReaderBuilder().newCharReader()};
    std::vector<Json::Value> trees_;
};

class TreeWriter : public Writer {
public:
    TreeWriter() {
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        builder["emitUTF8"] = true;
        writer_.reset(builder.newStreamWriter());
    }

    void load(std::vector<std::string_view> const & documents) override {
        std::unique_ptr<Json::CharReader> const reader(Json::CharReaderBuilder().newCharReader());
        for (std::string_view const document : documents) {
            reader->parse(document.data(), document.data() + document.size(),
                          &trees_.emplace_back(), nullptr);
        }
    }
    std::string_view write(std::size_t index) override {
        stream_.str({});
        writer_->write(trees_[index], &stream_);
        return stream_.view();
    }

private:
    std::vector<Json::Value> trees_;
    std::unique_ptr<Json::StreamWriter> writer_;
    std::ostringstream stream_;
};

}  // namespace

void addJsonCpp(Peers & peers) {
    addPeer<TreeReader>(peers.readers, "jsoncpp");
    addPeer<TreeKeeper>(peers.keepers, "jsoncpp");
    addPeer<TreeWriter>(peers.writers, "jsoncpp");
    peers.libraries.push_back("JsonCpp " JSONCPP_VERSION_STRING);
}

}  // namespace tvk::bench
