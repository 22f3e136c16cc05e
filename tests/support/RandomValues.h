#pragma once

#include <random>
#include <string>
#include <vector>

#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

/// Random value trees from a fixed seed: records, lists, texts, numbers, booleans and nulls. Texts come
/// from pieces that the owner chooses.
class RandomValues {
public:
    RandomValues(unsigned int seed, std::vector<std::string> pieces)
        : random_(seed), pieces_(std::move(pieces)) {}

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }

    CString text() {
        std::string bytes;
        for (unsigned int i = below(5); i > 0; --i) {
            bytes += pieces_[below(static_cast<unsigned int>(pieces_.size()))];
        }
        if (below(50) == 0) {
            bytes += std::string(below(6000), 'x');
        }
        return CString(bytes.data(), static_cast<int>(bytes.size()));
    }

    RefCountedPtr<FieldValue> scalar() {
        switch (below(7)) {
            case 0:
                return FieldValue::TRUE_VALUE;
            case 1:
                return FieldValue::FALSE_VALUE;
            case 2:
                return new NumberData(static_cast<long long>(random_()));
            case 3:
                return new NumberData(static_cast<double>(below(1000)) / 8);
            case 4:
                return withNulls_ ? nullptr : RefCountedPtr<FieldValue>(new StringData);
            default:
                return new StringData(text());
        }
    }

    RefCountedPtr<FieldValue> value(int depth) {
        switch (depth > 0 ? below(4) : 2) {
            case 0:
                return list(depth - 1).get();
            case 1:
                return record(depth - 1).get();
            default:
                return scalar();
        }
    }

    RefCountedPtr<ListData> list(int depth) {
        RefCountedPtr<ListData> result(new ListDataImpl(text()));
        for (unsigned int i = below(6); i > 0; --i) {
            result->addElement(value(depth));
        }
        return result;
    }

    RefCountedPtr<RecordData> record(int depth) {
        RefCountedPtr<RecordData> result(new MappedRecordData);
        for (unsigned int i = below(6); i > 0; --i) {
            result->setFieldValue(text(), value(depth));
        }
        return result;
    }

    void leaveNullsOut() { withNulls_ = false; }

private:
    std::mt19937 random_;
    std::vector<std::string> pieces_;
    bool withNulls_ = true;
};

}  // namespace tvk::test
