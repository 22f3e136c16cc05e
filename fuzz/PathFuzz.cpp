// Property: a path leads where its plain model leads, whole and in pieces. The last line of an input is
// the record, as JSON, and what stands before it the path; without JSON that can be read the path is
// tried on a record that is always the same.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "tests/support/PathModel.h"
#include "tests/support/ReferenceSplit.h"
#include "tests/support/TextBytes.h"
#include "tvk/agent/KestrinUtil.h"
#include "tvk/json/JsonMessageParser.h"

namespace {

using namespace tvk;

constexpr std::string_view SAMPLE =
    R"({"":{"":"e","a":1},"a":{"b":"x","l":[{"c":[1,2]},"s",[{"d":3}]]},"l":[[],{"l":[0,{"":4}]}]})";

RefCountedPtr<KestrinMessage> messageFrom(std::string_view json) {
    SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter(), 64);
    JsonMessageParser parser(&cache);
    ErrorInfo error;
    return parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, &error);
}

void check(RecordData const & record, std::string_view path) {
    FieldValue const * const expected = test::valueAtPath(record, path);
    FUZZ_CHECK(KestrinUtil::getFieldValueWithPath(record, test::textOf(path)) == expected);

    std::vector<CString> segments;
    for (std::string const & segment : test::referenceSplit(std::string(path), "/")) {
        segments.push_back(test::textOf(segment));
    }
    auto const count = static_cast<unsigned int>(segments.size());
    FUZZ_CHECK(KestrinUtil::getFieldValueWithPath(record, count, segments.data()) == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    // The model calls itself, and copies what is left of the path, for each of its pieces.
    constexpr std::size_t LARGEST = 4096;
    if (size > LARGEST) {
        return 0;
    }
    std::string_view const input(reinterpret_cast<char const *>(bytes), size);
    std::size_t const end = input.rfind('\n');
    std::string_view const path = input.substr(0, end);
    RefCountedPtr<KestrinMessage> message;
    if (end != std::string_view::npos) {
        message = messageFrom(input.substr(end + 1));
    }
    check(message.isNull() ? *messageFrom(SAMPLE) : *message, path);
    return 0;
}
