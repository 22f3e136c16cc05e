// Property: what was read is written as text that reads back the same, or, where a NUL cuts texts or
// names are not ASCII, the same from the second time on; and neither the entry nor the cache shows in
// a result. The first byte of an input chooses the reader's options, the code page and the writer's
// slash. Words of the grammar are in scanner.dict (-dict=).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/detail/ValueEquality.h"

namespace {

using namespace tvk;

constexpr int READER_OPTIONS = JSON_ALLOW_SLASH_COMMENT | JSON_ALLOW_HASH_COMMENT |
                               JSON_ALLOW_UNQUOTED_NAME | JSON_ALLOW_TRAILING_COMMA;
constexpr unsigned int CODE_PAGES[] = {932, 65001, 1252, 28591};

/// A parser with a cache of its own, in which nothing is left from other inputs.
class Reader {
public:
    explicit Reader(unsigned int capacity)
        : cache_(SimpleObjectCache::defaultRawDataConverter(), capacity), parser_(&cache_) {}

    RefCountedPtr<FieldValue> value(std::string_view text, int options) {
        cache_.clear();
        ErrorInfo error;
        RefCountedPtr<FieldValue> const result =
            parser_.parseOneJsonValue(text.data(), sizeOf(text), options, &error);
        FUZZ_CHECK(!error.hasError() || result.isNull());
        return result;
    }

    RefCountedPtr<KestrinMessage> message(std::string_view text, int options) {
        ErrorInfo error;
        RefCountedPtr<KestrinMessage> const result =
            parser_.parseJsonMessage(text.data(), sizeOf(text), options, &error);
        FUZZ_CHECK(error.hasError() == result.isNull());
        return result;
    }

private:
    static unsigned int sizeOf(std::string_view text) {
        return static_cast<unsigned int>(text.size());
    }

    SimpleObjectCache cache_;
    JsonMessageParser parser_;
};

/// A serializer whose room no text fits exactly: where one does, its last escape is lost.
class Writer {
public:
    explicit Writer(std::size_t inputSize) {
        // A byte becomes 3 in UTF-8 at most, each of which asks for 2; and that for reading twice.
        std::string const prefix(8192 + inputSize * 32, ' ');
        RefCountedPtr<ListData> const nothing(new ListDataImpl(CString()));
        serializer_.listDataToJson(prefix.data(), static_cast<unsigned int>(prefix.size()),
                                   *nothing, 0);
    }

    std::string text(FieldValue const & value, int options) {
        unsigned int const before = serializer_.capacity();
        unsigned int const size =
            value.getFieldType() == FLDTYPE_LIST
                ? serializer_.listDataToJson(nullptr, 0, value.asList(), options)
                : serializer_.recordDataToJson(nullptr, 0, value.asRecord(), options);
        FUZZ_CHECK(serializer_.capacity() == before);
        return std::string(static_cast<char const *>(serializer_.getResultsBuffer()), size);
    }

private:
    JsonMessageSerializer serializer_;
};

/// No byte above ASCII, no escape that gives one, and no NUL: nothing that is converted or cut.
bool isPlain(std::string_view input) {
    return std::all_of(input.begin(), input.end(),
                       [](char byte) { return static_cast<signed char>(byte) > 0; }) &&
           input.find("\\u") == std::string_view::npos;
}

/// Names come in as UTF-8 and go out as text in the code page: only in UTF-8 do they settle.
bool namesSettle(std::string_view input, unsigned int codePage) {
    return codePage == 65001 || isPlain(input);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    // A greater input has nothing new, and the room of the writer is a multiple of it.
    constexpr std::size_t LARGEST = 1 << 20;
    if (size == 0 || size > LARGEST) {
        return 0;
    }
    int const options = bytes[0] & READER_OPTIONS;
    int const slash = (bytes[0] & 1) != 0 ? JSON_ESCAPE_SLASH : 0;
    unsigned int const codePage = CODE_PAGES[bytes[0] >> 5 & 3];
    std::string_view const input(reinterpret_cast<char const *>(bytes) + 1, size - 1);
    platform::setAnsiCodePage(codePage);

    Reader reader(64);
    RefCountedPtr<FieldValue> const first = reader.value(input, options);
    RefCountedPtr<KestrinMessage> const message = reader.message(input, options);
    if (first.isNull() || first->getFieldType() == FLDTYPE_LIST) {
        FUZZ_CHECK(message.isNull());
    } else {
        FUZZ_CHECK(!message.isNull());
        FUZZ_CHECK(detail::recordDataEqual(first->asRecord(), *message));
    }
    FUZZ_CHECK(detail::fieldReferencesEqual(first.get(), Reader(1).value(input, options).get()));
    if (first.isNull()) {
        return 0;
    }

    Writer writer(size);
    std::string const text = writer.text(*first, slash);
    RefCountedPtr<FieldValue> const second = reader.value(text, 0);
    FUZZ_CHECK(!second.isNull());
    if (isPlain(input)) {
        FUZZ_CHECK(detail::fieldValuesEqual(*first, *second));
    }
    if (namesSettle(input, codePage)) {
        std::string const again = writer.text(*second, slash);
        FUZZ_CHECK(isPlain(input) ? again == text : again.size() <= text.size());
        RefCountedPtr<FieldValue> const third = reader.value(again, 0);
        FUZZ_CHECK(!third.isNull());
        FUZZ_CHECK(detail::fieldValuesEqual(*second, *third));
        FUZZ_CHECK(writer.text(*third, slash) == again);
    }
    return 0;
}
