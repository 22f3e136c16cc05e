#include "tvk/inet/InetClientInfo.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "tests/support/PrintCString.h"

namespace tvk {
namespace {

static_assert(!std::is_polymorphic_v<InetClientInfo>);

struct Field {
    char const * name;
    CString (InetClientInfo::*get)() const;
    void (InetClientInfo::*set)(CString const &);
};

constexpr Field FIELDS[] = {
    {"proxy", &InetClientInfo::getProxy, &InetClientInfo::setProxy},
    {"proxyUser", &InetClientInfo::getProxyUser, &InetClientInfo::setProxyUser},
    {"proxyPassword", &InetClientInfo::getProxyPassword, &InetClientInfo::setProxyPassword},
    {"userAgent", &InetClientInfo::getUserAgent, &InetClientInfo::setUserAgent},
    {"certFile", &InetClientInfo::getCertFile, &InetClientInfo::setCertFile},
};

/// A text of its own for each field.
void fill(InetClientInfo * info) {
    for (Field const & field : FIELDS) {
        (info->*field.set)(field.name);
    }
}

void expectFilled(InetClientInfo const & info) {
    for (Field const & field : FIELDS) {
        EXPECT_EQ((info.*field.get)(), field.name);
    }
}

TEST(InetClientInfo, StartsEmpty) {
    InetClientInfo const info;
    for (Field const & field : FIELDS) {
        EXPECT_EQ((info.*field.get)(), "") << field.name;
    }
}

TEST(InetClientInfo, KeepsEachTextApart) {
    InetClientInfo info;
    fill(&info);
    expectFilled(info);
}

TEST(InetClientInfo, ChecksNoValue) {
    InetClientInfo info;
    CString const odd("\0 not:a/proxy \xff", 15);
    info.setProxy(odd);
    EXPECT_EQ(info.getProxy(), odd);
}

TEST(InetClientInfo, CopiesAllTexts) {
    InetClientInfo info;
    fill(&info);
    InetClientInfo const copy(info);
    expectFilled(copy);
    expectFilled(info);

    InetClientInfo moved(std::move(info));
    expectFilled(moved);
}

TEST(InetClientInfo, AssignsAllTexts) {
    InetClientInfo info;
    fill(&info);
    InetClientInfo target;
    target.setProxy("before");
    InetClientInfo & result = target = info;
    EXPECT_EQ(&result, &target);
    expectFilled(target);

    InetClientInfo const & self = target;
    target = self;
    expectFilled(target);
}

}  // namespace
}  // namespace tvk
