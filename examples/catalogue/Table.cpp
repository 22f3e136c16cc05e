#include "examples/catalogue/Table.h"

#include <limits>

#include "examples/support/Columns.h"
#include "examples/support/Printable.h"
#include "tvk/definitions/ListTypeDef.h"

namespace {

std::string shown(CString const & text) {
    return printableAnsi(text, std::numeric_limits<std::size_t>::max());
}

std::vector<std::string> headings(char const * what) {
    return {what, "Japanese name", "Type", "Type in Japanese", "Size", "Description"};
}

void addFields(Columns & table, tvk::RecordTypeDef const & record) {
    for (tvk::FieldDef const * const field : record.getFieldDefList()) {
        std::string const size =
            field->getMaxSize() == 0 ? "" : std::to_string(field->getMaxSize());
        table.add({"  " + shown(field->getName()), shown(field->getNameJa()),
                   shown(field->getTypeName()), shown(field->getType()->getNameJa()), size,
                   shown(field->getDescription())});
    }
}

std::string withKind(std::string const & form, tvk::RecordTypeDef const & record) {
    return record.getKind().IsEmpty() ? form : form + " (" + shown(record.getKind()) + ")";
}

void addType(Columns & table, tvk::DataTypeDef const & type) {
    std::string form = "simple";
    std::string elementNameJa;
    if (type.isRecordType()) {
        form = withKind("record", static_cast<tvk::RecordTypeDef const &>(type));
    } else if (type.isListType()) {
        tvk::DataTypeDef const & element =
            *static_cast<tvk::ListTypeDef const &>(type).getElementTypeDef();
        form = "list of " + shown(element.getName());
        elementNameJa = shown(element.getNameJa());
    }
    table.add({shown(type.getName()), shown(type.getNameJa()), form, elementNameJa, "",
               shown(type.getDescription())});
    if (type.isRecordType()) {
        addFields(table, static_cast<tvk::RecordTypeDef const &>(type));
    }
}

void addMessage(Columns & table, tvk::MessageTypeDef const & message) {
    table.add({shown(message.getName()), shown(message.getNameJa()),
               withKind("message " + shown(message.getMessageTypeId()), message), "", "",
               shown(message.getDescription())});
    addFields(table, message);
}

}  // namespace

std::string catalogueTable(tvk::MessageDefManager const & catalogue) {
    Columns types(headings("Type"));
    for (tvk::DataTypeDef const * const type : catalogue.getDataTypeDefList()) {
        addType(types, *type);
    }
    Columns messages(headings("Message"));
    for (tvk::MessageTypeDef const * const message : catalogue.getMessageDefList()) {
        addMessage(messages, *message);
    }
    return types.text() + "\n" + messages.text();
}
