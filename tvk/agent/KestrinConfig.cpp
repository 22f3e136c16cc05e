#include "tvk/agent/KestrinConfig.h"

#include "tvk/values/SimplePropertySet.h"

namespace tvk {

KestrinConfig::KestrinConfig() : properties_(new SimplePropertySet) {}

KestrinConfig::KestrinConfig(KestrinConfig const & other)
    : PropertySet(other),
      versionNum_(other.versionNum_),
      description_(other.description_),
      loginId_(other.loginId_),
      password_(other.password_),
      properties_(new SimplePropertySet) {
    properties_->addProperties(*other.properties_);
}

KestrinConfig::~KestrinConfig() = default;

KestrinConfig & KestrinConfig::operator=(KestrinConfig const & other) {
    if (&other != this) {
        versionNum_ = other.versionNum_;
        description_ = other.description_;
        loginId_ = other.loginId_;
        password_ = other.password_;
        properties_->removeAllProperties();
        properties_->addProperties(*other.properties_);
    }
    return *this;
}

void KestrinConfig::setProperty(CString const & name, CString const & value) {
    properties_->setProperty(name, value);
}

CString KestrinConfig::getProperty(CString const & name) const {
    return properties_->getProperty(name);
}

bool KestrinConfig::hasProperty(CString const & name) const {
    return properties_->hasProperty(name);
}

void KestrinConfig::addProperties(PropertySet const & other) { properties_->addProperties(other); }

void KestrinConfig::mergeProperties(PropertySet const & other) {
    properties_->mergeProperties(other);
}

void KestrinConfig::removeProperty(CString const & name) { properties_->removeProperty(name); }

void KestrinConfig::removeAllProperties() { properties_->removeAllProperties(); }

std::vector<CString> KestrinConfig::getPropertyNames() const {
    return properties_->getPropertyNames();
}

unsigned int KestrinConfig::getPropertyCount() const { return properties_->getPropertyCount(); }

}  // namespace tvk
