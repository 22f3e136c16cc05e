#pragma once

#include "tvk/values/FieldValue.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// An ordered list of values with a declared name of its element type.
///
/// The name is a label: no element is checked against it. Elements may be null references, and are
/// shared: a copy of a list refers to the same element objects. Indexes are not tested.
class TVK_API ListData : public FieldValue {
public:
    ~ListData() override = 0;

    virtual CString const & getElementTypeName() const = 0;
    virtual void setElementTypeName(CString const & name) = 0;
    virtual unsigned int getCount() const = 0;
    /// Requires: index < getCount(). So for the next two.
    virtual RefCountedPtr<FieldValue> getElement(unsigned int index) const = 0;
    virtual void setElement(unsigned int index, RefCountedPtr<FieldValue> const & value) = 0;
    virtual void removeElement(unsigned int index) = 0;
    virtual void removeAllElements() = 0;
    virtual void addElement(RefCountedPtr<FieldValue> const & value) = 0;
    /// Before `index`; the count itself appends. Requires: index <= getCount().
    virtual void insertElementAt(unsigned int index, RefCountedPtr<FieldValue> const & value) = 0;
};

}  // namespace tvk
