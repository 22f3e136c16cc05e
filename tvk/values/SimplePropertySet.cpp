#include "tvk/values/SimplePropertySet.h"

#include <map>

namespace tvk {

struct SimplePropertySet::Impl {
    std::map<CString, CString> properties;
};

PropertySet::~PropertySet() = default;

SimplePropertySet::SimplePropertySet() : impl_(new Impl) {}

SimplePropertySet::~SimplePropertySet() { delete impl_; }

void SimplePropertySet::setProperty(CString const & name, CString const & value) {
    impl_->properties.insert_or_assign(name, value);
}

CString SimplePropertySet::getProperty(CString const & name) const {
    auto const found = impl_->properties.find(name);
    return found == impl_->properties.end() ? CString() : found->second;
}

bool SimplePropertySet::hasProperty(CString const & name) const {
    return impl_->properties.count(name) != 0;
}

void SimplePropertySet::addProperties(PropertySet const & other) {
    std::vector<CString> const names = other.getPropertyNames();
    unsigned int const count = other.getPropertyCount();
    for (unsigned int i = 0; i < count; ++i) {
        impl_->properties.insert_or_assign(names[i], other.getProperty(names[i]));
    }
}

void SimplePropertySet::mergeProperties(PropertySet const & other) {
    std::vector<CString> const names = other.getPropertyNames();
    unsigned int const count = other.getPropertyCount();
    for (unsigned int i = 0; i < count; ++i) {
        if (!hasProperty(names[i])) {
            impl_->properties.emplace(names[i], other.getProperty(names[i]));
        }
    }
}

void SimplePropertySet::removeProperty(CString const & name) { impl_->properties.erase(name); }

void SimplePropertySet::removeAllProperties() { impl_->properties.clear(); }

std::vector<CString> SimplePropertySet::getPropertyNames() const {
    std::vector<CString> names;
    names.reserve(impl_->properties.size());
    for (auto const & property : impl_->properties) {
        names.push_back(property.first);
    }
    return names;
}

unsigned int SimplePropertySet::getPropertyCount() const {
    return static_cast<unsigned int>(impl_->properties.size());
}

}  // namespace tvk
