#include "tvk/values/detail/MappedFields.h"

#include "tvk/values/detail/FieldMap.h"
#include "tvk/values/detail/WrongKind.h"

namespace tvk::detail {

template <class Interface>
MappedFields<Interface>::~MappedFields() = default;

template <class Interface>
FieldTypeEnum MappedFields<Interface>::getFieldType() const {
    return FLDTYPE_RECORD;
}

template <class Interface>
int MappedFields<Interface>::intValue() const {
    throwWrongKind("not a integer value");
}

template <class Interface>
long MappedFields<Interface>::longValue() const {
    throwWrongKind("not a long integer value");
}

template <class Interface>
long long MappedFields<Interface>::longlongValue() const {
    throwWrongKind("not a long long integer value");
}

template <class Interface>
double MappedFields<Interface>::doubleValue() const {
    throwWrongKind("not a double value");
}

template <class Interface>
CString const & MappedFields<Interface>::asString() const {
    throwWrongKind("not a string field");
}

template <class Interface>
ListData & MappedFields<Interface>::asList() {
    throwWrongKind("not a list field");
}

template <class Interface>
ListData const & MappedFields<Interface>::asList() const {
    throwWrongKind("not a list field");
}

template <class Interface>
RecordData & MappedFields<Interface>::asRecord() {
    return *this;
}

template <class Interface>
RecordData const & MappedFields<Interface>::asRecord() const {
    return *this;
}

template <class Interface>
RawData & MappedFields<Interface>::asRawData() {
    throwWrongKind("not a raw data field");
}

template <class Interface>
RawData const & MappedFields<Interface>::asRawData() const {
    throwWrongKind("not a raw data field");
}

template <class Interface>
CString MappedFields<Interface>::toString() const {
    return CString();
}

template <class Interface>
bool MappedFields<Interface>::hasField(CString const & name) const {
    return fields_->has(name);
}

template <class Interface>
unsigned int MappedFields<Interface>::getFieldCount() const {
    return static_cast<unsigned int>(fields_->count());
}

template <class Interface>
std::vector<CString> MappedFields<Interface>::getFieldNames() const {
    return fields_->names();
}

template <class Interface>
std::vector<RecordData::Field> MappedFields<Interface>::getAllFields() const {
    return fields_->views(*this);
}

template <class Interface>
RefCountedPtr<FieldValue> MappedFields<Interface>::getFieldValue(CString const & name) const {
    return fields_->get(name);
}

template <class Interface>
void MappedFields<Interface>::setFieldValue(CString const & name,
                                            RefCountedPtr<FieldValue> const & value) {
    fields_->set(name, value);
}

template <class Interface>
void MappedFields<Interface>::removeField(CString const & name) {
    fields_->remove(name);
}

template <class Interface>
void MappedFields<Interface>::removeAllFields() {
    fields_->removeAll();
}

template class MappedFields<RecordData>;
template class MappedFields<KestrinMessage>;
template class MappedFields<KestrinMessageHeader>;

}  // namespace tvk::detail
