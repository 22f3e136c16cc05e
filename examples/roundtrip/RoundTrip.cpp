#include "examples/roundtrip/RoundTrip.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <vector>

#include "examples/roundtrip/ReadsBack.h"
#include "examples/support/Printable.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/ListData.h"
#include "tvk/values/RecordData.h"

namespace {

using Clock = std::chrono::steady_clock;
using tvk::FieldValue;

constexpr std::size_t SHOWN_FIELDS = 16;
constexpr std::size_t SHOWN_BYTES = 60;
constexpr std::size_t SHOWN_JSON_BYTES = 400;

void add(RoundTrip::Way & way, std::size_t bytes, Clock::duration time) {
    ++way.messages;
    way.bytes += bytes;
    way.time += time;
}

/// The kind of a value and what it holds.
std::string describe(FieldValue const & value) {
    switch (value.getFieldType()) {
        case FLDTYPE_LIST:
            return "list    " + std::to_string(value.asList().getCount()) + " elements";
        case FLDTYPE_RECORD:
            return "record  " + std::to_string(value.asRecord().getFieldCount()) + " fields";
        case FLDTYPE_NUMBER:
            return "number  " + printable(bytesOf(value.asString()), SHOWN_BYTES);
        default:
            return "string  " + printableAnsi(value.asString(), SHOWN_BYTES);
    }
}

std::string describe(tvk::RecordData const & message, std::string_view json) {
    std::vector<tvk::RecordData::Field> const fields = message.getAllFields();
    std::string out;
    for (std::size_t i = 0; i < fields.size() && i < SHOWN_FIELDS; ++i) {
        std::string name = printable(bytesOf(*fields[i].name), SHOWN_BYTES);
        name.resize(std::max<std::size_t>(name.size(), 12), ' ');
        out += "  " + name + " " + describe(*fields[i].value) + "\n";
    }
    if (fields.size() > SHOWN_FIELDS) {
        out += "  and " + std::to_string(fields.size() - SHOWN_FIELDS) + " more fields\n";
    }
    return out + "as JSON:\n  " + printable(json, SHOWN_JSON_BYTES) + "\n";
}

}  // namespace

std::string RoundTrip::take(std::string_view line) {
    if (line.size() > std::numeric_limits<unsigned int>::max()) {
        return "the line is longer than the parser can take";
    }
    try {
        tvk::ErrorInfo error;
        auto const start = Clock::now();
        auto const message = parser_.parseJsonMessage(
            line.data(), static_cast<unsigned int>(line.size()), options_, &error);
        auto const read = Clock::now();
        if (message.isNull()) {
            return std::string(bytesOf(error.getErrorMessage()));
        }
        add(fromJson_, line.size(), read - start);

        auto const begin = Clock::now();
        unsigned int const size = serializer_.messageToJson(nullptr, 0, *message, 0);
        add(toJson_, size, Clock::now() - begin);

        if (firstMessage_.empty()) {
            auto const * const json = static_cast<char const *>(serializer_.getResultsBuffer());
            firstMessage_ = describe(*message, {json, size});
        }
        if (comesBack(*message, size)) {
            return "";
        }
        // A text of nothing but characters to escape loses its last one where the serializer's
        // buffer ends exactly with the room that it asks for. One byte further on it does not.
        bool const back = comesBack(*message, serializer_.messageToJson(" ", 1, *message, 0));
        return back ? "" : "the message that was written does not read back the same";
    } catch (std::exception const & failure) {
        return failure.what();
    }
}

bool RoundTrip::comesBack(tvk::KestrinMessage const & message, unsigned int size) {
    auto const again = parser_.parseJsonMessage(serializer_.getResultsBuffer(), size, 0, nullptr);
    return !again.isNull() && readsBackAs(message, *again);
}
