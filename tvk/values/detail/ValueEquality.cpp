#include "tvk/values/detail/ValueEquality.h"

#include <cstring>
#include <utility>
#include <vector>

#include "tvk/values/NumberData.h"
#include "tvk/values/RawData.h"

namespace tvk::detail {

namespace {

using Reference = RefCountedPtr<FieldValue>;

bool rawDataEqual(RawData const & left, RawData const & right) {
    unsigned int const size = left.getSize();
    return size == right.getSize() &&
           (size == 0 || std::memcmp(left.getBuffer(), right.getBuffer(), size) == 0);
}

/// One comparison: a walk over both values in step, depth first, with the open containers in a
/// stack.
class Comparison {
public:
    bool run(FieldValue const & left, FieldValue const & right) {
        return visit(left, right, nullptr, nullptr) && walk();
    }
    bool run(ListData const & left, ListData const & right) {
        return openLists(left, right, nullptr, nullptr) && walk();
    }
    bool run(RecordData const & left, RecordData const & right) {
        return openRecords(left, right, nullptr, nullptr) && walk();
    }

private:
    /// Two containers of one kind that are being compared, and where the walk stands in them.
    struct Pair {
        Reference heldLeft;  // null for the outermost two, which the caller keeps alive
        Reference heldRight;
        ListData const * leftList;  // null for records
        ListData const * rightList;
        RecordData const * leftRecord;
        RecordData const * rightRecord;
        std::vector<CString> names;  // of records
        unsigned int count;
        unsigned int next;
    };

    /// False when the values differ; containers of one length are left open for the walk.
    bool visit(FieldValue const & left, FieldValue const & right, Reference heldLeft,
               Reference heldRight) {
        FieldTypeEnum const type = left.getFieldType();
        if (type != right.getFieldType()) {
            return false;
        }
        switch (type) {
            case FLDTYPE_STRING:
                return left.asString() == right.asString();
            case FLDTYPE_NUMBER:
                return static_cast<NumberData const &>(left) ==
                       static_cast<NumberData const &>(right);
            case FLDTYPE_LIST:
                return openLists(left.asList(), right.asList(), std::move(heldLeft),
                                 std::move(heldRight));
            case FLDTYPE_RECORD:
                return openRecords(left.asRecord(), right.asRecord(), std::move(heldLeft),
                                   std::move(heldRight));
            case FLDTYPE_RAW:
                return rawDataEqual(left.asRawData(), right.asRawData());
        }
        return false;
    }

    bool openLists(ListData const & left, ListData const & right, Reference heldLeft,
                   Reference heldRight) {
        unsigned int const count = left.getCount();
        if (count != right.getCount()) {
            return false;
        }
        open_.push_back({std::move(heldLeft),
                         std::move(heldRight),
                         &left,
                         &right,
                         nullptr,
                         nullptr,
                         {},
                         count,
                         0});
        return true;
    }

    bool openRecords(RecordData const & left, RecordData const & right, Reference heldLeft,
                     Reference heldRight) {
        if (left.getFieldCount() != right.getFieldCount()) {
            return false;
        }
        std::vector<CString> names = left.getFieldNames();
        auto const count = static_cast<unsigned int>(names.size());
        open_.push_back({std::move(heldLeft), std::move(heldRight), nullptr, nullptr, &left, &right,
                         std::move(names), count, 0});
        return true;
    }

    bool walk() {
        while (!open_.empty()) {
            Pair & pair = open_.back();
            if (pair.next == pair.count) {
                open_.pop_back();
                continue;
            }
            unsigned int const index = pair.next++;
            Reference left;
            Reference right;
            if (pair.leftList != nullptr) {
                left = pair.leftList->getElement(index);
                right = pair.rightList->getElement(index);
            } else {
                CString const & name = pair.names[index];
                if (!pair.rightRecord->hasField(name)) {
                    return false;
                }
                left = pair.leftRecord->getFieldValue(name);
                right = pair.rightRecord->getFieldValue(name);
            }
            if (left == right) {
                continue;
            }
            if (left.isNull() || right.isNull()) {
                return false;
            }
            FieldValue const & leftValue = *left;
            FieldValue const & rightValue = *right;
            if (!visit(leftValue, rightValue, std::move(left), std::move(right))) {
                return false;
            }
        }
        return true;
    }

    std::vector<Pair> open_;
};

}  // namespace

bool fieldValuesEqual(FieldValue const & left, FieldValue const & right) {
    return Comparison().run(left, right);
}

bool fieldReferencesEqual(FieldValue const * left, FieldValue const * right) {
    if (left == right) {
        return true;
    }
    return left != nullptr && right != nullptr && fieldValuesEqual(*left, *right);
}

bool listDataEqual(ListData const & left, ListData const & right) {
    return Comparison().run(left, right);
}

bool recordDataEqual(RecordData const & left, RecordData const & right) {
    return Comparison().run(left, right);
}

}  // namespace tvk::detail
