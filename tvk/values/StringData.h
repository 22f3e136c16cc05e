#pragma once

#include <utility>

#include "tvk/values/FieldValue.h"

namespace tvk {

namespace detail {
class OwnValues;
struct WithText;
template <class Value>
class OneBlock;
}  // namespace detail

/// A text value. Its bytes are not interpreted, but for the numeric accessors: those read the
/// number that the text starts with, and give 0 where there is none.
class TVK_API StringData : public FieldValue {
public:
    StringData();
    StringData(char const * text);
    StringData(char const * text, unsigned int length);
    /// `count` times `character`.
    StringData(unsigned int count, char character);
    StringData(CString const & text);
    StringData(StringData const & other);

    /// Takes the text; the reference count stays.
    StringData & operator=(StringData const & other);
    StringData & operator=(CString const & text);

    bool operator==(StringData const & other) const;
    bool operator==(CString const & text) const;
    bool operator<(StringData const & other) const;
    bool operator<(CString const & text) const;

    FieldTypeEnum getFieldType() const override;
    /// atoi and atol: saturated at 32 bits.
    int intValue() const override;
    long longValue() const override;
    /// Clears errno first; ERANGE tells a value saturated at 64 bits.
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

private:
    friend class detail::OwnValues;
    template <class Value>
    friend class detail::OneBlock;
    StringData(detail::WithText const &, CString && text) noexcept : text_(std::move(text)) {}
    ~StringData() override;

    CString text_;
};

}  // namespace tvk
