#pragma once

#include "tvk/definitions/FieldDef.h"
#include "tvk/definitions/ListTypeDef.h"
#include "tvk/definitions/RecordTypeDef.h"
#include "tvk/definitions/SimpleTypeDef.h"

namespace tvk::detail {

/// The three texts of a definition that a loader fills.
template <class Interface>
class NamedDef : public Interface {
public:
    CString const & getName() const override { return name_; }
    CString const & getNameJa() const override { return nameJa_; }
    CString const & getDescription() const override { return description_; }

    /// Deliberate: re-keys nothing. A record or registry that holds this definition keeps it under the
    /// name that it had when it was added, so that look-ups stay what they were.
    void setName(CString const & name) { name_ = name; }
    void setNameJa(CString const & nameJa) { nameJa_ = nameJa; }
    void setDescription(CString const & description) { description_ = description; }

protected:
    NamedDef() = default;
    NamedDef(CString const & name, CString const & nameJa, CString const & description)
        : name_(name), nameJa_(nameJa), description_(description) {}
    ~NamedDef() override = default;

private:
    CString name_;
    CString nameJa_;
    CString description_;
};

extern template class TVK_API NamedDef<FieldDef>;
extern template class TVK_API NamedDef<ListTypeDef>;
extern template class TVK_API NamedDef<RecordTypeDef>;
extern template class TVK_API NamedDef<SimpleTypeDef>;

}  // namespace tvk::detail
