#include "examples/catalogue/ObjectReader.h"

#include <limits>
#include <utility>

#include "examples/support/Printable.h"
#include "tvk/values/ListData.h"
#include "tvk/values/NumberData.h"

namespace {

constexpr std::size_t SHOWN_BYTES = 60;

char const * kindOf(tvk::FieldValue const & value) {
    // A boolean is a number to everything but this comparison.
    if (&value == tvk::FieldValue::TRUE_VALUE || &value == tvk::FieldValue::FALSE_VALUE) {
        return "a boolean";
    }
    switch (value.getFieldType()) {
        case FLDTYPE_NUMBER:
            return "a number";
        case FLDTYPE_LIST:
            return "an array";
        case FLDTYPE_RECORD:
            return "an object";
        default:
            return "a string";
    }
}

std::string isExpected(char const * wanted, tvk::FieldValue const & value) {
    return std::string(wanted) + " is expected, not " + kindOf(value);
}

}  // namespace

ObjectReader::ObjectReader(tvk::FieldValue const & value, std::string place,
                           Complaints & complaints)
    : place_(std::move(place)), complaints_(complaints) {
    if (value.getFieldType() == FLDTYPE_RECORD) {
        object_ = &value.asRecord();
    } else {
        complaints_.add(place_, isExpected("an object", value));
    }
}

CString ObjectReader::requiredText(char const * name) {
    tvk::RefCountedPtr<tvk::FieldValue> const value = findRequired(name);
    CString text = asText(value.get(), name);
    if (text.IsEmpty() && value && value->getFieldType() == FLDTYPE_STRING) {
        complaints_.add(placeOf(name), "empty");
    }
    return text;
}

CString ObjectReader::optionalText(char const * name) { return asText(find(name).get(), name); }

int ObjectReader::optionalCount(char const * name) {
    constexpr int LAST = std::numeric_limits<int>::max();
    tvk::RefCountedPtr<tvk::FieldValue> const value = find(name);
    if (value.isNull()) {
        return 0;
    }
    auto const * const number = dynamic_cast<tvk::NumberData const *>(value.get());
    if (value == tvk::FieldValue::TRUE_VALUE || number == nullptr || !number->isInteger() ||
        number->longlongValue() < 1 || number->longlongValue() > LAST) {
        complaints_.add(placeOf(name),
                        "a whole number from 1 to " + std::to_string(LAST) + " is expected");
        return 0;
    }
    return number->intValue();
}

std::vector<ObjectReader::Element> ObjectReader::requiredArray(char const * name) {
    std::vector<Element> elements;
    tvk::RefCountedPtr<tvk::FieldValue> const value = findRequired(name);
    if (value.isNull()) {
        return elements;
    }
    if (value->getFieldType() != FLDTYPE_LIST) {
        complaints_.add(placeOf(name), isExpected("an array", *value));
        return elements;
    }
    tvk::ListData const & list = value->asList();
    elements.reserve(list.getCount());
    for (unsigned int i = 0; i < list.getCount(); ++i) {
        elements.push_back({list.getElement(i), placeOf(name) + "[" + std::to_string(i) + "]"});
    }
    return elements;
}

void ObjectReader::refuseOthers() {
    if (object_ == nullptr) {
        return;
    }
    for (CString const & name : object_->getFieldNames()) {
        if (known_.count(name) == 0) {
            // Names, unlike texts, are still in UTF-8.
            complaints_.add(place_,
                            "unknown member \"" + printable(bytesOf(name), SHOWN_BYTES) + '"');
        }
    }
}

std::string ObjectReader::placeOf(std::string const & name) const {
    return place_.empty() ? name : place_ + "." + name;
}

tvk::RefCountedPtr<tvk::FieldValue> ObjectReader::find(char const * name) {
    known_.insert(name);
    return object_ == nullptr ? nullptr : object_->getFieldValue(name);
}

tvk::RefCountedPtr<tvk::FieldValue> ObjectReader::findRequired(char const * name) {
    tvk::RefCountedPtr<tvk::FieldValue> value = find(name);
    if (object_ != nullptr && value.isNull()) {
        complaints_.add(placeOf(name), "missing");
    }
    return value;
}

CString ObjectReader::asText(tvk::FieldValue const * value, char const * name) {
    if (value == nullptr) {
        return {};
    }
    if (value->getFieldType() != FLDTYPE_STRING) {
        complaints_.add(placeOf(name), isExpected("a string", *value));
        return {};
    }
    return value->asString();
}
