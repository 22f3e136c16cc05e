#pragma once

#include "tvk/values/PropertySet.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// What an agent is started with: version, description, login and any further properties.
///
/// Ownership: counted; made with `new`, ends with its last reference. A copy is deep.
/// Threads:   one thread at a time.
class TVK_API KestrinConfig : public PropertySet {
public:
    KestrinConfig();
    KestrinConfig(KestrinConfig const & other);
    /// The count stays this object's own.
    KestrinConfig & operator=(KestrinConfig const & other);

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

    CString getVersionNum() const { return versionNum_; }
    void setVersionNum(CString const & versionNum) { versionNum_ = versionNum; }
    CString getDescription() const { return description_; }
    void setDescription(CString const & description) { description_ = description; }
    CString getLoginId() const { return loginId_; }
    void setLoginId(CString const & loginId) { loginId_ = loginId; }
    CString getPassword() const { return password_; }
    void setPassword(CString const & password) { password_ = password; }

private:
    ~KestrinConfig() override;

    CString versionNum_;
    CString description_;
    CString loginId_;
    CString password_;
    RefCountedPtr<PropertySet> properties_;
};

}  // namespace tvk
