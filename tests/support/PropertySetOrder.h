#pragma once

#include <vector>

#include "tests/support/VirtualOrder.h"
#include "tvk/values/PropertySet.h"

namespace tvk::test {

/// The operations of PropertySet stand at 3 to 11 in a class that derives from it.
template <class Class>
void expectPropertySetOrder() {
    expectVirtualOrder(
        3, {{"setProperty", slotOf<void(CString const &, CString const &)>(&Class::setProperty)},
            {"getProperty", slotOf<CString(CString const &) const>(&Class::getProperty)},
            {"hasProperty", slotOf<bool(CString const &) const>(&Class::hasProperty)},
            {"addProperties", slotOf(&Class::addProperties)},
            {"mergeProperties", slotOf(&Class::mergeProperties)},
            {"removeProperty", slotOf(&Class::removeProperty)},
            {"removeAllProperties", slotOf(&Class::removeAllProperties)},
            {"getPropertyNames", slotOf(&Class::getPropertyNames)},
            {"getPropertyCount", slotOf(&Class::getPropertyCount)}});
}

}  // namespace tvk::test
