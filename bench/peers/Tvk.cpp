#include <string>

#include "bench/peers/EachItem.h"
#include "bench/peers/Peers.h"
#include "bench/peers/TvkInlined.h"
#include "tvk/tvk.h"

namespace tvk::bench {

namespace {

constexpr unsigned int UTF8_CODE_PAGE = 65001;
constexpr unsigned int JAPANESE_CODE_PAGE = 932;

unsigned int sizeOf(std::string_view text) { return static_cast<unsigned int>(text.size()); }

std::string_view viewOf(CString const & text) {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

EventSum & sumOf(void * userData) { return *static_cast<EventSum *>(userData); }

class TvkScanner : public Scanner {
public:
    void scan(std::string_view document, EventSum & sum) override {
        JsonUtil::parseOneJsonValue(document.data(), sizeOf(document), &handler_, &sum, 0);
    }

private:
    SimpleJsonHandler handler_ = {
        [](void * user) { return sumOf(user).startObject(), 0; },
        [](void * user) { return sumOf(user).endObject(), 0; },
        [](void * user) { return sumOf(user).startArray(), 0; },
        [](void * user) { return sumOf(user).endArray(), 0; },
        [](void * user, char const *, unsigned int length) { return sumOf(user).name(length), 0; },
        [](void * user, unsigned int hash, char const *, unsigned int length) {
            return sumOf(user).string(hash, length), 0;
        },
        [](void * user, int value) { return sumOf(user).boolean(value != 0), 0; },
        [](void * user) { return sumOf(user).null(), 0; },
        [](void * user, unsigned int hash, char const *, unsigned int length, char const *,
           char const *) { return sumOf(user).number(hash, length), 0; },
    };
};

std::uint64_t sumOfValue(FieldValue const & value);

std::uint64_t sumOfRecord(RecordData const & record) {
    std::uint64_t sum = TreeSum::EMPTY_RECORD;
    for (RecordData::Field const & field : record.getAllFields()) {
        sum += TreeSum::ofMember(viewOf(*field.name), sumOfValue(*field.value));
    }
    return sum;
}

std::uint64_t sumOfList(ListData const & list) {
    std::uint64_t sum = TreeSum::EMPTY_LIST;
    for (unsigned int i = 0; i < list.getCount(); ++i) {
        sum = TreeSum::ofElement(sum, sumOfValue(*list.getElement(i)));
    }
    return sum;
}

std::uint64_t sumOfValue(FieldValue const & value) {
    switch (value.getFieldType()) {
        case FLDTYPE_RECORD:
            return sumOfRecord(value.asRecord());
        case FLDTYPE_LIST:
            return sumOfList(value.asList());
        case FLDTYPE_NUMBER:
            return &value == FieldValue::TRUE_VALUE || &value == FieldValue::FALSE_VALUE
                       ? TreeSum::ofBoolean(&value == FieldValue::TRUE_VALUE)
                       : TreeSum::ofNumber(value.doubleValue());
        default:
            return TreeSum::ofText(viewOf(platform::ansiToUtf8(
                value.asString(), static_cast<unsigned int>(value.asString().GetLength()))));
    }
}

/// One parser and one cache for the whole feed. Peers keep their texts in UTF-8, which is the code
/// page 65001 here; with 932 there is a conversion to do.
template <unsigned int CODE_PAGE>
class TvkReader : public Reader {
public:
    void begin() override { platform::setAnsiCodePage(CODE_PAGE); }
    void read(std::string_view document) override { parse(document); }
    std::uint64_t sum(std::string_view document) override { return sumOfRecord(*parse(document)); }

private:
    RefCountedPtr<KestrinMessage> parse(std::string_view document) {
        return parser_.parseJsonMessage(document.data(), sizeOf(document), 0, nullptr);
    }

    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser_{&cache_};
};

/// Values that messages share count for the messages as long as one holds them.
class TvkKeeper : public Keeper {
public:
    TvkKeeper() { platform::setAnsiCodePage(UTF8_CODE_PAGE); }

    void reserve(std::size_t messages) override { messages_.reserve(messages); }
    void add(std::string_view document) override {
        messages_.push_back(
            parser_->parseJsonMessage(document.data(), sizeOf(document), 0, nullptr));
    }
    void endFeed() override {
        parser_.reset();
        cache_.reset();
    }
    std::uint64_t sum(std::size_t index) override { return sumOfRecord(*messages_[index]); }

private:
    std::unique_ptr<SimpleObjectCache> cache_ =
        std::make_unique<SimpleObjectCache>(SimpleObjectCache::defaultRawDataConverter());
    std::unique_ptr<JsonMessageParser> parser_ = std::make_unique<JsonMessageParser>(cache_.get());
    std::vector<RefCountedPtr<KestrinMessage>> messages_;
};

template <unsigned int CODE_PAGE>
class TvkWriter : public Writer {
public:
    void begin() override { platform::setAnsiCodePage(CODE_PAGE); }
    void load(std::vector<std::string_view> const & documents) override {
        SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
        JsonMessageParser parser(&cache);
        for (std::string_view const document : documents) {
            messages_.push_back(
                parser.parseJsonMessage(document.data(), sizeOf(document), 0, nullptr));
        }
    }
    std::string_view write(std::size_t index) override {
        unsigned int const size = serializer_.messageToJson(nullptr, 0, *messages_[index], 0);
        return {static_cast<char const *>(serializer_.getResultsBuffer()), size};
    }

private:
    std::vector<RefCountedPtr<KestrinMessage>> messages_;
    JsonMessageSerializer serializer_;
};

class TvkCache : public Interner {
public:
    void insert(TextKey const & key, ValuePtr const &) override {
        cache_.cachedString(key.hash, key.text.data(), sizeOf(key.text));
    }
    std::size_t findAll(std::span<TextKey const> keys) override {
        unsigned long const before = cache_.fastHitCount();
        for (TextKey const & key : keys) {
            cache_.cachedString(key.hash, key.text.data(), sizeOf(key.text));
        }
        return cache_.fastHitCount() - before;
    }

private:
    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
};

class TvkCodePage : public CodePageConverter {
public:
    TvkCodePage() { platform::setAnsiCodePage(JAPANESE_CODE_PAGE); }

    std::string_view toCodePage(std::string_view utf8) override {
        return viewOf(result_ = platform::utf8ToAnsi(utf8.data(), sizeOf(utf8)));
    }
    std::string_view toUtf8(std::string_view text) override {
        return viewOf(result_ = platform::ansiToUtf8(text.data(), sizeOf(text)));
    }

private:
    CString result_;
};

/// Into a room that is kept, as iconv is used.
class TvkCodePageIntoRoom : public CodePageConverter {
public:
    TvkCodePageIntoRoom() { platform::setAnsiCodePage(JAPANESE_CODE_PAGE); }

    std::string_view toCodePage(std::string_view utf8) override {
        makeRoom(utf8.size() * platform::UTF8_TO_ANSI_ROOM);
        return {room_.data(), platform::utf8ToAnsi(utf8.data(), utf8.size(), room_.data())};
    }
    std::string_view toUtf8(std::string_view text) override {
        makeRoom(text.size() * platform::ANSI_TO_UTF8_ROOM);
        return {room_.data(), platform::ansiToUtf8(text.data(), text.size(), room_.data())};
    }

private:
    void makeRoom(std::size_t size) {
        if (room_.size() < size) {
            room_.resize(size);
        }
    }

    std::string room_;
};

/// Character by character, with all checks.
class TvkUtf8 : public Utf8Decoder {
public:
    std::uint64_t decode(std::string_view text) override {
        std::uint64_t sum = 0;
        unsigned int byteCount = 0;
        for (unsigned int at = 0; at < text.size(); at += byteCount) {
            sum += static_cast<std::uint64_t>(
                JsonUtil::nextUtf8Char(text.data(), sizeOf(text), at, &byteCount));
        }
        return sum;
    }
    std::size_t count(std::string_view text) override {
        return StringUtil::countUtf8Char(text.data(), sizeOf(text), nullptr);
    }
};

struct TvkBase64 {
    CString operator()(std::string_view bytes) const {
        return StringUtil::base64Encode(bytes.data(), sizeOf(bytes), false);
    }
};

struct TvkHex {
    CString operator()(std::string_view bytes) const {
        return StringUtil::toHexString(bytes.data(), sizeOf(bytes));
    }
};

struct TvkPercentEncoder {
    CString operator()(std::string_view text) const {
        return StringUtil::urlEncode(text.data(), sizeOf(text));
    }
};

struct TvkPercentDecoder {
    CString operator()(std::string_view text) const {
        return StringUtil::urlDecode(text.data(), sizeOf(text), nullptr);
    }
};

struct TvkDateParser {
    std::int64_t operator()(std::string_view text) const {
        timeval time{};
        return DateTimeUtil::parseDateTime(text.data(), sizeOf(text), &time)
                   ? std::int64_t{time.tv_sec} * 1000000 + time.tv_usec
                   : -1;
    }
};

struct TvkDateFormatter {
    CString operator()(timeval const & time) const {
        return DateTimeUtil::formatDisplayDateTime(time, '/');
    }
};

struct TvkSplitter {
    std::vector<CString> operator()(SplitTask const & task) const {
        return StringUtil::split(task.tvkText, task.tvkDelimiter);
    }
};

}  // namespace

void addTvk(Peers & peers) {
    addPeer<TvkScanner>(peers.scanners, "tvk");
    peers.scanners.push_back({"tvk_inlined", makeInlinedScanner});
    addPeer<TvkScanner>(peers.plainScanners, "tvk");
    addPeer<TvkReader<UTF8_CODE_PAGE>>(peers.readers, "tvk");
    addPeer<TvkReader<JAPANESE_CODE_PAGE>>(peers.readers, "tvk_932", true);
    addPeer<TvkKeeper>(peers.keepers, "tvk");
    addPeer<TvkWriter<UTF8_CODE_PAGE>>(peers.writers, "tvk");
    addPeer<TvkWriter<JAPANESE_CODE_PAGE>>(peers.writers, "tvk_932", true);
    addPeer<TvkCache>(peers.interners, "tvk");
    addPeer<TvkCache>(peers.hashingInterners, "tvk");
    addPeer<TvkCodePageIntoRoom>(peers.codePageConverters, "tvk");
    addPeer<TvkCodePage>(peers.codePageConverters, "tvk_CString");
    addPeer<TvkUtf8>(peers.utf8Decoders, "tvk");
    addFunction<TvkBase64>(peers.base64Encoders, "tvk");
    addFunction<TvkHex>(peers.hexEncoders, "tvk");
    addFunction<TvkPercentEncoder>(peers.percentEncoders, "tvk");
    addFunction<TvkPercentDecoder>(peers.percentDecoders, "tvk");
    addFunction<TvkDateParser>(peers.dateParsers, "tvk");
    addFunction<TvkDateFormatter>(peers.dateFormatters, "tvk");
    addFunction<TvkSplitter>(peers.splitters, "tvk");
}

}  // namespace tvk::bench
