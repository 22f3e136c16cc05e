#pragma once

#include "tvk/platform/CString.h"

namespace tvk {

/// How many subscriptions are open for one type and subject.
struct InternalSubscriptionInfo {
    CString type;
    CString subject;
    int count = 0;  ///< never negative
};

}  // namespace tvk
