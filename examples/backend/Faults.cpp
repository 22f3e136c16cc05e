#include "examples/backend/Faults.h"

#include <algorithm>
#include <array>
#include <random>
#include <string_view>

#include "examples/backend/Names.h"
#include "examples/backend/Texts.h"
#include "examples/support/Fields.h"

namespace backend {

namespace {

struct Name {
    std::string_view name;
    Fault::Kind kind;
};

constexpr std::array<Name, 15> NAMES = {{
    {"delay", Fault::DELAY},
    {"drop", Fault::DROP},
    {"badLength", Fault::BAD_LENGTH},
    {"badKind", Fault::BAD_KIND},
    {"badJson", Fault::BAD_JSON},
    {"halfFrame", Fault::HALF_FRAME},
    {"garbage", Fault::GARBAGE},
    {"disconnect", Fault::DISCONNECT},
    {"slowReading", Fault::SLOW_READING},
    {"silence", Fault::SILENCE},
    {"goodbye", Fault::GOODBYE},
    {"expireLogin", Fault::EXPIRE_LOGIN},
    {"forgetSession", Fault::FORGET_SESSION},
    {"burst", Fault::BURST},
    {"newDay", Fault::NEW_DAY},
}};

constexpr long long MOST = 10'000'000;  // of anything

// Where things stand in a frame; docs/frames.md describes it.
constexpr std::size_t LENGTH_BYTES = 4;
constexpr std::size_t KIND_OFFSET = 4;
constexpr std::size_t HEAD_SIZE_OFFSET = 12;
constexpr std::size_t PREFIX_BYTES = 24;

constexpr std::size_t GARBAGE_BYTES = 256;

void putNumber(std::string & frame, std::size_t offset, std::size_t number) {
    for (std::size_t place = 0; place < LENGTH_BYTES; ++place) {
        std::size_t const shift = 8 * (LENGTH_BYTES - 1 - place);
        frame[offset + place] = static_cast<char>(static_cast<unsigned char>(number >> shift));
    }
}

std::size_t numberAt(std::string const & frame, std::size_t offset) {
    std::size_t number = 0;
    for (std::size_t place = 0; place < LENGTH_BYTES; ++place) {
        number = number << 8U | static_cast<unsigned char>(frame[offset + place]);
    }
    return number;
}

bool isInRange(long long number, long long least) { return number >= least && number <= MOST; }

}  // namespace

std::optional<Fault> faultOf(tvk::RecordData const & body) {
    std::string const name = utf8In(body, field::KIND);
    auto const known = std::find_if(NAMES.begin(), NAMES.end(),
                                    [&name](Name const & other) { return other.name == name; });
    if (known == NAMES.end()) {
        return std::nullopt;
    }
    Fault fault;
    fault.kind = known->kind;
    fault.milliSec = numberIn(body, field::MILLI_SEC);
    fault.count = body.hasField(field::COUNT) ? numberIn(body, field::COUNT) : 1;
    fault.afterBytes = numberIn(body, field::AFTER_BYTES);
    fault.bytesPerSecond = numberIn(body, field::BYTES_PER_SECOND);
    fault.code = static_cast<int>(std::clamp(numberIn(body, field::CODE), -MOST, MOST));
    fault.text = utf8In(body, field::TEXT);
    fault.type = utf8In(body, field::TYPE);
    fault.subject = utf8In(body, field::SUBJECT);
    fault.first = body.hasField(field::FIRST) ? numberIn(body, field::FIRST) : 1;
    fault.retry = !body.hasField(field::RETRY) || numberIn(body, field::RETRY) != 0;
    fault.paced = numberIn(body, field::PACED) != 0;
    bool const makesSense = isInRange(fault.milliSec, 0) && isInRange(fault.count, 1) &&
                            isInRange(fault.afterBytes, 0) && isInRange(fault.bytesPerSecond, 0) &&
                            isInRange(fault.first, 0);
    return makesSense ? std::optional(fault) : std::nullopt;
}

std::optional<Fault> ReplyFaults::next() {
    if (faults_.empty()) {
        return std::nullopt;
    }
    Fault const fault = faults_.front();
    if (--faults_.front().count <= 0) {
        faults_.pop_front();
    }
    return fault;
}

bool concernsReplies(Fault::Kind kind) { return kind <= Fault::HALF_FRAME; }

std::string spoiled(Fault::Kind kind, std::string frame) {
    constexpr std::size_t TOO_SHORT = 5;
    constexpr char UNKNOWN_KIND = 99;
    switch (kind) {
        case Fault::BAD_LENGTH:
            putNumber(frame, 0, TOO_SHORT);
            break;
        case Fault::BAD_KIND:
            frame[KIND_OFFSET] = UNKNOWN_KIND;
            break;
        case Fault::BAD_JSON:
            frame.resize(PREFIX_BYTES + numberAt(frame, HEAD_SIZE_OFFSET));
            frame += "{\"cut\":";
            putNumber(frame, 0, frame.size() - LENGTH_BYTES);
            break;
        case Fault::HALF_FRAME:
            frame.resize(frame.size() / 2);
            break;
        default:
            break;
    }
    return frame;
}

/// The first byte makes a length of it that no limit allows.
std::string garbage() {
    std::mt19937 random;
    std::string bytes(GARBAGE_BYTES, '\xFF');
    std::generate(bytes.begin() + 1, bytes.end(), [&random] {
        return static_cast<char>(static_cast<unsigned char>(random() & 0xFFU));
    });
    return bytes;
}

}  // namespace backend
