#pragma once

#include <vector>

#include "tests/support/Recorded.h"
#include "tvk/definitions/FieldDefImpl.h"
#include "tvk/definitions/MessageTypeDef.h"
#include "tvk/definitions/SimpleTypeDef.h"

namespace tvk::test {

/// A text that a zero-terminated one could not carry: NUL and bytes beyond ASCII.
inline CString oddText() { return CString("a\0\x8A\xFF", 4); }

/// The texts of a definition, for doubles of any of its interfaces; the rest is empty.
template <class Interface>
class NamedDouble : public Interface {
public:
    explicit NamedDouble(CString const & name) : name_(name) {}

    CString const & getName() const override { return name_; }
    CString const & getNameJa() const override { return empty_; }
    CString const & getDescription() const override { return empty_; }

protected:
    ~NamedDouble() override = default;

    CString name_;
    CString empty_;
};

/// A data type of somebody else.
class TypeDouble : public NamedDouble<DataTypeDef> {
public:
    using NamedDouble::NamedDouble;

    bool isSimpleType() const override { return false; }
    bool isRecordType() const override { return false; }
    bool isListType() const override { return false; }

protected:
    ~TypeDouble() override = default;
};

/// A message type of somebody else, one that does derive from MessageTypeDef.
class MessageTypeDouble : public NamedDouble<MessageTypeDef> {
public:
    using NamedDouble::NamedDouble;

    bool isSimpleType() const override { return false; }
    bool isRecordType() const override { return true; }
    bool isListType() const override { return false; }
    std::vector<FieldDef const *> const & getFieldDefList() const override { return noFields_; }
    FieldDef const * getFieldDef(CString const &) const override { return nullptr; }
    unsigned int getFieldCount() const override { return 0; }
    CString const & getKind() const override { return empty_; }
    CString const & getMessageTypeId() const override { return empty_; }

protected:
    ~MessageTypeDouble() override = default;

private:
    std::vector<FieldDef const *> noFields_;
};

/// A field of somebody else.
class FieldDouble : public NamedDouble<FieldDef> {
public:
    using NamedDouble::NamedDouble;

    RecordTypeDef const * getEnclosingRecordType() const override { return nullptr; }
    CString getQualifiedName() const override { return "the double's " + name_; }
    DataTypeDef const * getType() const override { return nullptr; }
    CString const & getTypeName() const override { return empty_; }
    int getMaxSize() const override { return 0; }

protected:
    ~FieldDouble() override = default;
};

}  // namespace tvk::test
