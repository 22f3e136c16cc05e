#include "tvk/agent/InternalSubscriptionInfo.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "tests/support/PrintCString.h"

namespace tvk {
namespace {

static_assert(std::is_aggregate_v<InternalSubscriptionInfo>);
static_assert(std::is_default_constructible_v<InternalSubscriptionInfo>);
static_assert(std::is_same_v<decltype(InternalSubscriptionInfo::count), int>);

TEST(InternalSubscriptionInfo, BeginsEmptyWithNothingOpen) {
    InternalSubscriptionInfo const info;
    EXPECT_EQ(info.type, "");
    EXPECT_EQ(info.subject, "");
    EXPECT_EQ(info.count, 0);
}

TEST(InternalSubscriptionInfo, CopiesAllThreeFields) {
    InternalSubscriptionInfo const source{"type", "subject", 3};
    InternalSubscriptionInfo const copy(source);
    InternalSubscriptionInfo assigned{"other", "one", 7};
    assigned = source;
    for (InternalSubscriptionInfo const * info : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(info->type, "type");
        EXPECT_EQ(info->subject, "subject");
        EXPECT_EQ(info->count, 3);
    }
}

TEST(InternalSubscriptionInfo, HoldsItsFieldsInOrder) {
    InternalSubscriptionInfo const info;
    EXPECT_EQ(static_cast<void const *>(&info), &info.type);
    EXPECT_LT(static_cast<void const *>(&info.type), static_cast<void const *>(&info.subject));
    EXPECT_LT(static_cast<void const *>(&info.subject), static_cast<void const *>(&info.count));
}

}  // namespace
}  // namespace tvk
