#include "tvk/inet/CookieInfo.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/PrintCString.h"

namespace tvk {
namespace {

static_assert(!std::is_polymorphic_v<CookieInfo>);

struct Field {
    char const * name;
    CString (CookieInfo::*get)() const;
    void (CookieInfo::*set)(CString const &);
};

constexpr Field FIELDS[] = {
    {"name", &CookieInfo::getName, &CookieInfo::setName},
    {"value", &CookieInfo::getValue, &CookieInfo::setValue},
    {"comment", &CookieInfo::getComment, &CookieInfo::setComment},
    {"domain", &CookieInfo::getDomain, &CookieInfo::setDomain},
    {"maxAge", &CookieInfo::getMaxAge, &CookieInfo::setMaxAge},
    {"expires", &CookieInfo::getExpires, &CookieInfo::setExpires},
    {"path", &CookieInfo::getPath, &CookieInfo::setPath},
    {"version", &CookieInfo::getVersion, &CookieInfo::setVersion},
};

/// A text of its own for each field.
void fill(CookieInfo * cookie) {
    for (Field const & field : FIELDS) {
        (cookie->*field.set)(field.name);
    }
    cookie->setSecure(true);
}

void expectFilled(CookieInfo const & cookie, char const * expires) {
    for (Field const & field : FIELDS) {
        bool const isExpires = field.get == &CookieInfo::getExpires;
        EXPECT_EQ((cookie.*field.get)(), isExpires ? expires : field.name) << field.name;
    }
    EXPECT_TRUE(cookie.isSecure());
}

TEST(CookieInfo, StartsEmptyAndNotSecure) {
    CookieInfo const cookie;
    for (Field const & field : FIELDS) {
        EXPECT_EQ((cookie.*field.get)(), "") << field.name;
    }
    EXPECT_FALSE(cookie.isSecure());
}

TEST(CookieInfo, KeepsEachTextApart) {
    CookieInfo cookie;
    fill(&cookie);
    expectFilled(cookie, "expires");
    cookie.setSecure(false);
    EXPECT_FALSE(cookie.isSecure());
}

TEST(CookieInfo, ChecksNoValue) {
    CookieInfo cookie;
    CString const odd("\0;=\"\xff", 5);
    cookie.setMaxAge(odd);
    EXPECT_EQ(cookie.getMaxAge(), odd);
}

TEST(CookieInfo, DeliberateCopiesHaveNoExpires) {
    CookieInfo cookie;
    fill(&cookie);
    CookieInfo const copy(cookie);
    expectFilled(copy, "");
    expectFilled(cookie, "expires");
}

TEST(CookieInfo, DeliberateAssignmentKeepsTheTargetsExpires) {
    CookieInfo cookie;
    fill(&cookie);
    CookieInfo target;
    target.setName("before");
    target.setExpires("of the target");
    CookieInfo & result = target = cookie;
    EXPECT_EQ(&result, &target);
    expectFilled(target, "of the target");

    CookieInfo fresh;
    fresh = cookie;
    expectFilled(fresh, "");
}

TEST(CookieInfo, AssignsAllOfAnEmptyCookieToo) {
    CookieInfo target;
    fill(&target);
    target = CookieInfo();
    for (Field const & field : FIELDS) {
        bool const isExpires = field.get == &CookieInfo::getExpires;
        EXPECT_EQ((target.*field.get)(), isExpires ? "expires" : "") << field.name;
    }
    EXPECT_FALSE(target.isSecure());
}

TEST(CookieInfo, AssignmentToItselfChangesNothing) {
    CookieInfo cookie;
    fill(&cookie);
    CookieInfo const & self = cookie;
    cookie = self;
    expectFilled(cookie, "expires");
}

TEST(CookieInfo, DeliberateMovesAreCopies) {
    CookieInfo cookie;
    fill(&cookie);
    CookieInfo moved(std::move(cookie));
    expectFilled(moved, "");
    expectFilled(cookie, "expires");  // NOLINT(bugprone-use-after-move): what is left is the test
    moved.setExpires("its own");
    moved = std::move(cookie);
    expectFilled(moved, "its own");
}

TEST(CookieInfo, DeliberateAVectorThatGrowsLosesExpires) {
    std::vector<CookieInfo> cookies(1);
    fill(&cookies[0]);
    cookies.reserve(cookies.capacity() + 1);
    expectFilled(cookies[0], "");
}

}  // namespace
}  // namespace tvk
