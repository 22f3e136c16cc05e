#include "examples/roundtrip/ReadsBack.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "tvk/platform/CodePage.h"
#include "tvk/values/ListData.h"

namespace {

using tvk::FieldValue;
using tvk::ListData;
using tvk::RecordData;

struct Pair {
    FieldValue const * written;
    FieldValue const * read;
};

CString upToNul(CString const & text) {
    int const end = text.Find('\0');
    return end < 0 ? text : text.Left(end);
}

bool isAscii(CString const & text) {
    char const * const bytes = text.GetString();
    return std::none_of(bytes, bytes + text.GetLength(),
                        [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
}

CString nameReadBack(CString const & name) {
    if (isAscii(name)) {
        return upToNul(name);
    }
    return upToNul(
        tvk::platform::ansiToUtf8(name.GetString(), static_cast<unsigned int>(name.GetLength())));
}

bool isTrueOrFalse(FieldValue const * value) {
    return value == FieldValue::TRUE_VALUE || value == FieldValue::FALSE_VALUE;
}

bool scalarReadsBack(FieldValue const & written, FieldValue const & read) {
    if (&written == &read) {
        return true;
    }
    if (written.getFieldType() == FLDTYPE_NUMBER) {
        return !isTrueOrFalse(&written) && !isTrueOrFalse(&read) &&
               written.asString() == read.asString() &&
               written.longlongValue() == read.longlongValue() &&
               written.doubleValue() == read.doubleValue();
    }
    return upToNul(written.asString()) == read.asString();
}

/// The members of one record, or of one list, on both sides; gives them out pair by pair.
class Level {
public:
    enum Step { PAIR, DONE, DIFFERENT };

    Level(RecordData const & written, RecordData const & read) {
        std::map<CString, FieldValue const *> expected;
        for (RecordData::Field const & field : written.getAllFields()) {
            if (field.value != nullptr) {
                expected[nameReadBack(*field.name)] = field.value;
            }
        }
        std::vector<RecordData::Field> const fields = read.getAllFields();
        different_ = !std::equal(expected.begin(), expected.end(), fields.begin(), fields.end(),
                                 [](auto const & wanted, RecordData::Field const & field) {
                                     return wanted.first == *field.name && field.value != nullptr;
                                 });
        if (!different_) {
            auto field = fields.begin();
            members_.reserve(fields.size());
            for (auto const & wanted : expected) {
                members_.push_back({wanted.second, (field++)->value});
            }
        }
    }

    Level(ListData const & written, ListData const & read)
        : writtenList_(&written),
          readList_(&read),
          different_(nameReadBack(written.getElementTypeName()) != read.getElementTypeName()) {}

    Step next(Pair & pair) {
        if (different_) {
            return DIFFERENT;
        }
        return writtenList_ != nullptr ? nextElement(pair) : nextField(pair);
    }

private:
    Step nextField(Pair & pair) {
        if (at_ == members_.size()) {
            return DONE;
        }
        pair = members_[at_++];
        return PAIR;
    }

    Step nextElement(Pair & pair) {
        // The lists keep their elements: the counted references may go at once.
        pair.written = nullptr;
        while (pair.written == nullptr) {
            if (at_ == writtenList_->getCount()) {
                return readAt_ == readList_->getCount() ? DONE : DIFFERENT;
            }
            pair.written = writtenList_->getElement(static_cast<unsigned int>(at_++)).get();
        }
        if (readAt_ == readList_->getCount()) {
            return DIFFERENT;
        }
        pair.read = readList_->getElement(readAt_++).get();
        return pair.read != nullptr ? PAIR : DIFFERENT;
    }

    std::vector<Pair> members_;
    ListData const * writtenList_ = nullptr;
    ListData const * readList_ = nullptr;
    std::size_t at_ = 0;
    unsigned int readAt_ = 0;
    bool different_;
};

}  // namespace

bool readsBackAs(tvk::RecordData const & written, tvk::RecordData const & read) {
    std::vector<Level> open;
    open.emplace_back(written, read);
    while (!open.empty()) {
        Pair pair{};
        Level::Step const step = open.back().next(pair);
        if (step == Level::DIFFERENT) {
            return false;
        }
        if (step == Level::DONE) {
            open.pop_back();
            continue;
        }
        FieldTypeEnum const type = pair.written->getFieldType();
        if (type != pair.read->getFieldType()) {
            return false;
        }
        if (type == FLDTYPE_LIST) {
            open.emplace_back(pair.written->asList(), pair.read->asList());
        } else if (type == FLDTYPE_RECORD) {
            open.emplace_back(pair.written->asRecord(), pair.read->asRecord());
        } else if (!scalarReadsBack(*pair.written, *pair.read)) {
            return false;
        }
    }
    return true;
}
