#pragma once

#include <optional>
#include <vector>

#include "tests/support/ValueDouble.h"
#include "tvk/values/ListData.h"

namespace tvk::test {

/// A list that is not the library's: open to look into, and able to claim any count.
class ListDataDouble : public ValueDouble<ListData, FLDTYPE_LIST> {
public:
    ~ListDataDouble() override = default;

    std::vector<RefCountedPtr<FieldValue>> elements;
    CString name;
    std::optional<unsigned int> count;  // what getCount claims
    mutable int fetched = 0;

    ListData & asList() override { return *this; }
    ListData const & asList() const override { return *this; }

    CString const & getElementTypeName() const override { return name; }
    void setElementTypeName(CString const & newName) override { name = newName; }
    unsigned int getCount() const override {
        return count.value_or(static_cast<unsigned int>(elements.size()));
    }
    RefCountedPtr<FieldValue> getElement(unsigned int index) const override {
        ++fetched;
        return elements[index];
    }
    void setElement(unsigned int index, RefCountedPtr<FieldValue> const & value) override {
        elements[index] = value;
    }
    void removeElement(unsigned int index) override { elements.erase(elements.begin() + index); }
    void removeAllElements() override { elements.clear(); }
    void addElement(RefCountedPtr<FieldValue> const & value) override { elements.push_back(value); }
    void insertElementAt(unsigned int index, RefCountedPtr<FieldValue> const & value) override {
        elements.insert(elements.begin() + index, value);
    }
};

}  // namespace tvk::test
