#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/NumberAtStart.h"
#include "tests/support/ReferenceSplit.h"
#include "tvk/values/ListData.h"
#include "tvk/values/RecordData.h"

namespace tvk::test {

/// A plain model of paths: looks at every field, and calls itself for each piece behind the first.
/// The result belongs to the record.
inline FieldValue * valueAtSegments(RecordData const & record, std::vector<std::string> segments) {
    std::string const segment = segments.front();
    std::string_view name = segment;
    std::string_view index;
    bool const indexed = name.find('[') != std::string_view::npos;
    if (indexed) {
        if (name.back() != ']') {
            return nullptr;
        }
        index = name.substr(name.find('[') + 1);
        index.remove_suffix(1);
        name = name.substr(0, name.find('['));
    }
    FieldValue * value = nullptr;
    for (RecordData::Field const & field : record.getAllFields()) {
        if (std::string_view(*field.name, static_cast<std::size_t>(field.name->GetLength())) ==
            name) {
            value = field.value;
        }
    }
    if (indexed) {
        if (value == nullptr || value->getFieldType() != FLDTYPE_LIST) {
            return nullptr;
        }
        long long const place = numberAtStart(index);
        ListData const & list = value->asList();
        if (place < 0 || place >= list.getCount()) {
            return nullptr;
        }
        value = list.getElement(static_cast<unsigned int>(place)).get();
    }
    if (segments.size() == 1) {
        return value;
    }
    if (value == nullptr || value->getFieldType() != FLDTYPE_RECORD) {
        return nullptr;
    }
    segments.erase(segments.begin());
    return valueAtSegments(value->asRecord(), segments);
}

inline FieldValue * valueAtPath(RecordData const & record, std::string_view path) {
    return valueAtSegments(record, referenceSplit(std::string(path), "/"));
}

}  // namespace tvk::test
