#pragma once

#include "tvk/values/KestrinMessage.h"
#include "tvk/values/KestrinMessageHeader.h"
#include "tvk/values/RecordData.h"

namespace tvk::detail {

class FieldMap;
class ReadyMade;

/// What the map-backed record, message and header have in common: the fields, always in ascending
/// order of their names' bytes, and the answers of a record to the accessors of other kinds.
///
/// Ownership: the map, and one count on each value that is not null.
template <class Interface>
class MappedFields : public Interface {
public:
    using Interface::getFieldValue;
    using Interface::hasField;
    using Interface::removeField;
    using Interface::setFieldValue;

    FieldTypeEnum getFieldType() const override;
    int intValue() const override;
    long longValue() const override;
    long long longlongValue() const override;
    double doubleValue() const override;
    CString const & asString() const override;
    ListData & asList() override;
    ListData const & asList() const override;
    RecordData & asRecord() override;
    RecordData const & asRecord() const override;
    RawData & asRawData() override;
    RawData const & asRawData() const override;
    CString toString() const override;

    bool hasField(CString const & name) const override;
    unsigned int getFieldCount() const override;
    std::vector<CString> getFieldNames() const override;
    std::vector<RecordData::Field> getAllFields() const override;
    RefCountedPtr<FieldValue> getFieldValue(CString const & name) const override;
    void setFieldValue(CString const & name, RefCountedPtr<FieldValue> const & value) override;
    void removeField(CString const & name) override;
    void removeAllFields() override;

protected:
    /// Takes `fields` over: the destructor of the class that made them hands them to FieldMap::end.
    /// They may lie in one block with this object.
    explicit MappedFields(FieldMap * fields, bool isInOneBlock = false)
        : isInOneBlock_(isInOneBlock), fields_(fields) {}
    MappedFields(MappedFields const &) = delete;
    MappedFields & operator=(MappedFields const &) = delete;
    ~MappedFields() override;

    FieldMap & fields() { return *fields_; }
    FieldMap const & fields() const { return *fields_; }

private:
    friend class FieldMap;

    bool isInOneBlock_;
    FieldMap * fields_;
};

extern template class TVK_API MappedFields<RecordData>;
extern template class TVK_API MappedFields<KestrinMessage>;
extern template class TVK_API MappedFields<KestrinMessageHeader>;

}  // namespace tvk::detail
