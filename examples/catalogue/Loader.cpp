#include "examples/catalogue/Loader.h"

#include <limits>
#include <set>

#include "examples/catalogue/Complaints.h"
#include "examples/catalogue/ObjectReader.h"
#include "examples/catalogue/References.h"
#include "examples/support/Printable.h"
#include "tvk/definitions/FieldDefImpl.h"
#include "tvk/definitions/ListTypeDefImpl.h"
#include "tvk/definitions/MessageDefManagerImpl.h"
#include "tvk/definitions/MessageTypeDefImpl.h"
#include "tvk/definitions/RecordTypeDefImpl.h"
#include "tvk/definitions/SimpleTypeDefImpl.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/SimpleObjectCache.h"

namespace {

using tvk::RefCountedPtr;

/// The longest error text of the scanner holds 256 bytes of input.
constexpr std::size_t SHOWN_ERROR_BYTES = 400;

template <class Definition>
void setTexts(Definition & definition, ObjectReader & object) {
    definition.setName(object.requiredText("name"));
    definition.setNameJa(object.requiredText("nameJa"));
    definition.setDescription(object.optionalText("description"));
}

/// Fills a registry with definitions that know each other by name alone, and gives it out when all
/// names have turned out well. A definition with a fault is registered all the same: what refers to
/// it is not wrong on that account.
class Loader {
public:
    explicit Loader(Complaints & complaints) : complaints_(complaints) {}

    void read(tvk::FieldValue const & root) {
        ObjectReader file(root, "", complaints_);
        for (ObjectReader::Element const & type : file.requiredArray("types")) {
            readType(type);
        }
        for (ObjectReader::Element const & message : file.requiredArray("messages")) {
            readMessage(message);
        }
        file.refuseOthers();
    }

    /// Null if there are complaints.
    RefCountedPtr<tvk::MessageDefManager> finish() {
        references_.check(*registry_, complaints_);
        if (!complaints_.isEmpty()) {
            return nullptr;
        }
        references_.resolve(*registry_);
        return registry_;
    }

private:
    void readType(ObjectReader::Element const & element) {
        ObjectReader object(*element.value, element.place, complaints_);
        CString const form = object.requiredText("form");
        if (form == "record") {
            readRecord(object);
        } else if (form == "list") {
            readList(object);
        } else {
            readSimple(object);
            if (form != "simple" && !form.IsEmpty()) {
                complaints_.add(object.placeOf("form"), "unknown form " + quoted(form));
                return;  // which other members belong here is not known
            }
        }
        if (!form.IsEmpty()) {
            object.refuseOthers();
        }
    }

    void readSimple(ObjectReader & object) {
        RefCountedPtr<tvk::SimpleTypeDefImpl> const type(new tvk::SimpleTypeDefImpl);
        setTexts(*type, object);
        registerType(*type, object);
    }

    void readRecord(ObjectReader & object) {
        RefCountedPtr<tvk::RecordTypeDefImpl> const type(new tvk::RecordTypeDefImpl);
        setTexts(*type, object);
        type->setKind(object.optionalText("kind"));
        registerType(*type, object);
        readFields(*type, type.get(), object);
    }

    void readList(ObjectReader & object) {
        RefCountedPtr<tvk::ListTypeDefImpl> const type(new tvk::ListTypeDefImpl);
        setTexts(*type, object);
        type->setElementTypeName(object.requiredText("elementType"));
        type->setElementFieldName(object.optionalText("elementFieldName"));
        type->setLengthOfCount(static_cast<unsigned int>(object.optionalCount("lengthOfCount")));
        registerType(*type, object);
        if (!type->getElementTypeName().IsEmpty()) {
            references_.add(
                object.placeOf("elementType"), type.get(), type->getElementTypeName(),
                [type](tvk::DataTypeDef const * element) { type->setElementTypeDef(element); });
        }
    }

    void readMessage(ObjectReader::Element const & element) {
        ObjectReader object(*element.value, element.place, complaints_);
        RefCountedPtr<tvk::MessageTypeDefImpl> const message(new tvk::MessageTypeDefImpl);
        setTexts(*message, object);
        message->setKind(object.optionalText("kind"));
        message->setMessageTypeId(object.requiredText("id"));
        registerMessage(*message, object);
        readFields(*message, nullptr, object);
        object.refuseOthers();
    }

    /// Into a record or message type. `from` is that type where others can refer to it, else null.
    template <class Definition>
    void readFields(Definition & definition, tvk::DataTypeDef const * from, ObjectReader & object) {
        for (ObjectReader::Element const & element : object.requiredArray("fields")) {
            ObjectReader fieldObject(*element.value, element.place, complaints_);
            RefCountedPtr<tvk::FieldDefImpl> const field = readField(fieldObject, from);
            field->setEnclosingRecordType(&definition);
            if (field->getName().IsEmpty()) {
                continue;  // reported by now, and not a duplicate of another without a name
            }
            try {
                definition.addFieldDef(field.get());
            } catch (tvk::ErrorInfo const & refusal) {
                complaints_.add(fieldObject.placeOf("name"),
                                printableAnsi(refusal.getErrorMessage(), SHOWN_ERROR_BYTES));
            }
        }
    }

    RefCountedPtr<tvk::FieldDefImpl> readField(ObjectReader & object,
                                               tvk::DataTypeDef const * from) {
        RefCountedPtr<tvk::FieldDefImpl> field(new tvk::FieldDefImpl("", "", ""));
        setTexts(*field, object);
        field->setTypeName(object.requiredText("type"));
        field->setMaxSize(object.optionalCount("maxSize"));
        object.refuseOthers();
        if (!field->getTypeName().IsEmpty()) {
            references_.add(object.placeOf("type"), from, field->getTypeName(),
                            [field](tvk::DataTypeDef const * type) { field->setType(type); });
        }
        return field;
    }

    void registerType(tvk::DataTypeDef const & type, ObjectReader & object) {
        if (!type.getName().IsEmpty() && !registry_->addDataType(&type)) {
            complaints_.add(object.placeOf("name"),
                            "duplicate type name " + quoted(type.getName()));
        }
    }

    void registerMessage(tvk::MessageTypeDefImpl const & message, ObjectReader & object) {
        if (!message.getName().IsEmpty() &&
            !registry_->addMessageType(message.asMessageTypeDef())) {
            complaints_.add(object.placeOf("name"),
                            "duplicate message name " + quoted(message.getName()));
        }
        CString const & id = message.getMessageTypeId();
        if (!id.IsEmpty() && !messageTypeIds_.insert(id).second) {
            complaints_.add(object.placeOf("id"), "duplicate message id " + quoted(id));
        }
    }

    Complaints & complaints_;
    RefCountedPtr<tvk::MessageDefManagerImpl> registry_{new tvk::MessageDefManagerImpl};
    References references_;
    std::set<CString> messageTypeIds_;
};

RefCountedPtr<tvk::MessageDefManager> load(std::string_view json, Complaints & complaints) {
    if (json.size() > std::numeric_limits<unsigned int>::max()) {
        complaints.add("", "the file is longer than the parser can take");
        return nullptr;
    }
    tvk::SimpleObjectCache cache(tvk::SimpleObjectCache::defaultRawDataConverter());
    tvk::JsonMessageParser parser(&cache);
    tvk::ErrorInfo error;
    auto const root =
        parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, &error);
    if (root.isNull()) {
        complaints.add("", printable(bytesOf(error.getErrorMessage()), SHOWN_ERROR_BYTES));
        return nullptr;
    }
    Loader loader(complaints);
    loader.read(*root);
    return loader.finish();
}

}  // namespace

LoadedCatalogue loadCatalogue(std::string_view json) {
    Complaints complaints;
    RefCountedPtr<tvk::MessageDefManager> registry = load(json, complaints);
    return {registry, complaints.lines()};
}
