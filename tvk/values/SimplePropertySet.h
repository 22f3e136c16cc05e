#pragma once

#include "tvk/values/PropertySet.h"

namespace tvk {

/// Properties in an ordered map: names come in ascending order of their bytes.
///
/// Neither copied nor assigned; addProperties on a fresh one copies the content.
class TVK_API SimplePropertySet : public PropertySet {
public:
    SimplePropertySet();
    SimplePropertySet(SimplePropertySet const &) = delete;
    SimplePropertySet & operator=(SimplePropertySet const &) = delete;

    using PropertySet::getProperty;
    using PropertySet::hasProperty;
    using PropertySet::setProperty;

    void setProperty(CString const & name, CString const & value) override;
    CString getProperty(CString const & name) const override;
    bool hasProperty(CString const & name) const override;
    void addProperties(PropertySet const & other) override;
    void mergeProperties(PropertySet const & other) override;
    void removeProperty(CString const & name) override;
    void removeAllProperties() override;
    std::vector<CString> getPropertyNames() const override;
    unsigned int getPropertyCount() const override;

private:
    struct Impl;

    ~SimplePropertySet() override;

    Impl * impl_;
};

}  // namespace tvk
