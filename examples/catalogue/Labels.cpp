#include "examples/catalogue/Labels.h"

#include <set>

#include "examples/support/Columns.h"
#include "examples/support/Printable.h"
#include "tvk/definitions/ListElementFieldDefImpl.h"
#include "tvk/definitions/ListTypeDef.h"
#include "tvk/definitions/SimpleTypeDef.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/ListData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RefCountedPtr.h"

namespace {

using tvk::FieldValue;
using tvk::SimpleTypeDef;

constexpr std::size_t SHOWN_BYTES = 60;

std::string shown(CString const & text) { return printableAnsi(text, SHOWN_BYTES); }

/// Names of fields in a message are still in UTF-8, those in the catalogue are in the code page.
CString nameInMessage(CString const & name) {
    return tvk::platform::ansiToUtf8(name.GetString(), static_cast<unsigned int>(name.GetLength()));
}

bool isBoolean(FieldValue const & value) {
    return &value == FieldValue::TRUE_VALUE || &value == FieldValue::FALSE_VALUE;
}

bool isNumber(FieldValue const & value) {
    return value.getFieldType() == FLDTYPE_NUMBER && !isBoolean(value);
}

bool isInteger(FieldValue const & value) {
    auto const * const number = dynamic_cast<tvk::NumberData const *>(&value);
    return isNumber(value) && number != nullptr && number->isInteger();
}

bool isContainer(FieldValue const & value) {
    return value.getFieldType() == FLDTYPE_LIST || value.getFieldType() == FLDTYPE_RECORD;
}

std::string showValue(FieldValue const & value) {
    switch (value.getFieldType()) {
        case FLDTYPE_LIST:
            return "list of " + std::to_string(value.asList().getCount());
        case FLDTYPE_RECORD:
            return "record of " + std::to_string(value.asRecord().getFieldCount());
        case FLDTYPE_NUMBER:
            if (isBoolean(value)) {
                return &value == FieldValue::TRUE_VALUE ? "true" : "false";
            }
            return shown(value.asString());
        default:
            return shown(value.asString());
    }
}

/// What is wrong with the kind of a value; empty if nothing is. A simple type of the catalogue's own
/// may be any text or number, the definition does not say which.
std::string remarkOnKind(tvk::DataTypeDef const & type, FieldValue const & value) {
    if (type.isRecordType()) {
        return value.getFieldType() == FLDTYPE_RECORD ? "" : "a record is expected";
    }
    if (type.isListType()) {
        return value.getFieldType() == FLDTYPE_LIST ? "" : "a list is expected";
    }
    if (&type == SimpleTypeDef::STRING_TYPE()) {
        return value.getFieldType() == FLDTYPE_STRING ? "" : "a string is expected";
    }
    if (&type == SimpleTypeDef::INTEGER_TYPE()) {
        return isInteger(value) ? "" : "an integer is expected";
    }
    if (&type == SimpleTypeDef::DECIMAL_TYPE()) {
        return isNumber(value) ? "" : "a number is expected";
    }
    if (&type == SimpleTypeDef::BOOLEAN_TYPE()) {
        return isBoolean(value) ? "" : "a boolean is expected";
    }
    return isContainer(value) ? "a single value is expected" : "";
}

std::string remarkOnSize(int maxSize, FieldValue const & value) {
    bool const fits = maxSize == 0 || value.getFieldType() != FLDTYPE_STRING ||
                      value.asString().GetLength() <= maxSize;
    return fits ? "" : "longer than " + std::to_string(maxSize) + " bytes";
}

/// Goes down along the definitions, which are not nested deep: a loaded catalogue sees to that. What
/// a message holds beyond them is not entered.
class Labeller {
public:
    void addFields(tvk::RecordTypeDef const & type, tvk::RecordData const & record,
                   std::string const & prefix) {
        std::set<CString> defined;
        for (tvk::FieldDef const * const field : type.getFieldDefList()) {
            CString const name = nameInMessage(field->getName());
            defined.insert(name);
            tvk::RefCountedPtr<FieldValue> const value = record.getFieldValue(name);
            if (value) {
                addValue(*field, *value, prefix + shown(field->getName()));
            }
        }
        for (tvk::RecordData::Field const & field : record.getAllFields()) {
            if (field.value != nullptr && defined.count(*field.name) == 0) {
                table_.add({prefix + printable(bytesOf(*field.name), SHOWN_BYTES), "", "", "",
                            showValue(*field.value), "not in the catalogue"});
            }
        }
    }

    std::string text() const { return table_.text(); }

private:
    void addValue(tvk::FieldDef const & field, FieldValue const & value, std::string const & path) {
        tvk::DataTypeDef const & type = *field.getType();
        std::string remark = remarkOnKind(type, value);
        bool const fits = remark.empty();
        if (fits) {
            remark = remarkOnSize(field.getMaxSize(), value);
        }
        table_.add({path, shown(field.getNameJa()), shown(type.getName()), shown(type.getNameJa()),
                    showValue(value), remark});
        if (fits && type.isRecordType()) {
            addFields(static_cast<tvk::RecordTypeDef const &>(type), value.asRecord(), path + "/");
        } else if (fits && type.isListType()) {
            addElements(field, static_cast<tvk::ListTypeDef const &>(type), value.asList(), path);
        }
    }

    void addElements(tvk::FieldDef const & field, tvk::ListTypeDef const & type,
                     tvk::ListData const & list, std::string const & path) {
        tvk::RefCountedPtr<tvk::ListElementFieldDefImpl> const element(
            new tvk::ListElementFieldDefImpl(&field, &type));
        for (unsigned int i = 0; i < list.getCount(); ++i) {
            tvk::RefCountedPtr<FieldValue> const value = list.getElement(i);
            if (value) {
                element->setIndex(i);
                addValue(*element, *value, path + shown(element->getName()));
            }
        }
    }

    Columns table_{{"Field", "Japanese name", "Type", "Type in Japanese", "Value", "Remark"}};
};

}  // namespace

tvk::MessageTypeDef const * definitionOf(tvk::MessageDefManager const & catalogue,
                                         tvk::RecordData const & message) {
    tvk::RefCountedPtr<FieldValue> const id = message.getFieldValue("type");
    if (id.isNull() || id->getFieldType() != FLDTYPE_STRING) {
        return nullptr;
    }
    for (tvk::MessageTypeDef const * const type : catalogue.getMessageDefList()) {
        if (type->getMessageTypeId() == id->asString()) {
            return type;
        }
    }
    return nullptr;
}

std::string labelled(tvk::MessageTypeDef const & type, tvk::RecordData const & message) {
    Labeller labeller;
    labeller.addFields(type, message, "");
    return labeller.text();
}
