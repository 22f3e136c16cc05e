// The header stands before and behind the system's own time headers: it must not meet them.
#include "tvk/platform/SystemTime.h"
//
#include <sys/time.h>
#include <time.h>

#include <ctime>
//
#include "tvk/platform/SystemTime.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace {

template <auto MEMBER>
constexpr bool IS_16_BITS =
    std::is_same_v<decltype(SYSTEMTIME().*MEMBER), std::uint16_t &&> ||
    std::is_same_v<std::remove_reference_t<decltype(SYSTEMTIME().*MEMBER)>, std::uint16_t>;

static_assert(std::is_same_v<::SYSTEMTIME, ::_SYSTEMTIME>);
static_assert(std::is_trivially_copyable_v<SYSTEMTIME> && std::is_standard_layout_v<SYSTEMTIME>);
static_assert(sizeof(SYSTEMTIME) == 16);
static_assert(IS_16_BITS<&SYSTEMTIME::wYear> && IS_16_BITS<&SYSTEMTIME::wMonth> &&
              IS_16_BITS<&SYSTEMTIME::wDayOfWeek> && IS_16_BITS<&SYSTEMTIME::wDay> &&
              IS_16_BITS<&SYSTEMTIME::wHour> && IS_16_BITS<&SYSTEMTIME::wMinute> &&
              IS_16_BITS<&SYSTEMTIME::wSecond> && IS_16_BITS<&SYSTEMTIME::wMilliseconds>);

TEST(SystemTime, HasItsEightFieldsInOrder) {
    EXPECT_EQ(offsetof(SYSTEMTIME, wYear), 0U);
    EXPECT_EQ(offsetof(SYSTEMTIME, wMonth), 2U);
    EXPECT_EQ(offsetof(SYSTEMTIME, wDayOfWeek), 4U);
    EXPECT_EQ(offsetof(SYSTEMTIME, wDay), 6U);
    EXPECT_EQ(offsetof(SYSTEMTIME, wHour), 8U);
    EXPECT_EQ(offsetof(SYSTEMTIME, wMinute), 10U);
    EXPECT_EQ(offsetof(SYSTEMTIME, wSecond), 12U);
    EXPECT_EQ(offsetof(SYSTEMTIME, wMilliseconds), 14U);
}

}  // namespace
