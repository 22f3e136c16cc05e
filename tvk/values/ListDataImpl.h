#pragma once

#include <vector>

#include "tvk/values/ListData.h"

namespace tvk {

namespace detail {
class OwnValues;
class ReadyMade;
}  // namespace detail

/// A list in one contiguous vector.
///
/// Ownership: one count on each element that is not null, released in element order at the end,
///            however deep the elements nest.
/// Failure:   std::length_error "vector too long" beyond 0x3fffffff places. The accessors of other
///            kinds throw their texts, see FieldValue.
class TVK_API ListDataImpl : public ListData {
public:
    explicit ListDataImpl(CString const & elementTypeName);
    /// An empty list with that many places reserved.
    ListDataImpl(unsigned int places, CString const & elementTypeName);
    ListDataImpl(ListDataImpl const & other);
    ListDataImpl(ListData const & other);

    /// Replaces name and elements.
    ListDataImpl & operator=(ListDataImpl const & other);
    /// Deliberate: takes the name and appends the elements behind those already here. Modules
    /// gather the lists of several messages with it.
    ListDataImpl & operator=(ListData const & other);

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

    CString const & getElementTypeName() const override;
    void setElementTypeName(CString const & name) override;
    unsigned int getCount() const override;
    RefCountedPtr<FieldValue> getElement(unsigned int index) const override;
    void setElement(unsigned int index, RefCountedPtr<FieldValue> const & value) override;
    void removeElement(unsigned int index) override;
    /// Keeps the room of the vector.
    void removeAllElements() override;
    void addElement(RefCountedPtr<FieldValue> const & value) override;
    void insertElementAt(unsigned int index, RefCountedPtr<FieldValue> const & value) override;

private:
    friend class detail::OwnValues;
    friend class detail::ReadyMade;

    ~ListDataImpl() override;

    void appendElementsOf(ListData const & other);

    std::vector<RefCountedPtr<FieldValue>> elements_;
    CString elementTypeName_;
};

}  // namespace tvk
