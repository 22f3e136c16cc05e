#pragma once

#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

/// Text names to text values.
///
/// A miss is an empty text, a removal of nothing is silent.
class TVK_API PropertySet : public RefCounted {
public:
    ~PropertySet() override = 0;

    virtual void setProperty(CString const & name, CString const & value) = 0;
    /// Empty for an absent name; hasProperty tells that from an empty value.
    virtual CString getProperty(CString const & name) const = 0;
    virtual bool hasProperty(CString const & name) const = 0;
    /// The incoming values win.
    virtual void addProperties(PropertySet const & other) = 0;
    /// The existing values win; the others are not even read.
    virtual void mergeProperties(PropertySet const & other) = 0;
    virtual void removeProperty(CString const & name) = 0;
    virtual void removeAllProperties() = 0;
    virtual std::vector<CString> getPropertyNames() const = 0;
    virtual unsigned int getPropertyCount() const = 0;

    // Conveniences over the operations above.
    void setProperty(CString const & name, char const * value) {
        setProperty(name, CString(value));
    }
    void setProperty(CString const & name, char const * value, unsigned int length) {
        setProperty(name, CString(value, static_cast<int>(length)));
    }
    void setProperty(char const * name, char const * value) {
        setProperty(CString(name), CString(value));
    }
    void setProperty(char const * name, char const * value, unsigned int length) {
        setProperty(CString(name), CString(value, static_cast<int>(length)));
    }
    CString getProperty(char const * name) const { return getProperty(CString(name)); }
    bool hasProperty(char const * name) const { return hasProperty(CString(name)); }
};

}  // namespace tvk
