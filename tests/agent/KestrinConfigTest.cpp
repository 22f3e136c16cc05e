#include "tvk/agent/KestrinConfig.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "tests/support/LikeSimplePropertySet.h"
#include "tests/support/PrintCString.h"
#include "tests/support/PropertySetOrder.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

using test::propertiesOf;
using test::slotOf;
using Config = RefCountedPtr<KestrinConfig>;

static_assert(std::is_base_of_v<PropertySet, KestrinConfig>);
static_assert(!std::is_destructible_v<KestrinConfig>);
static_assert(std::is_copy_assignable_v<KestrinConfig>);

struct TextField {
    char const * name;
    CString (KestrinConfig::*get)() const;
    void (KestrinConfig::*set)(CString const &);
};

constexpr TextField TEXT_FIELDS[] = {
    {"versionNum", &KestrinConfig::getVersionNum, &KestrinConfig::setVersionNum},
    {"description", &KestrinConfig::getDescription, &KestrinConfig::setDescription},
    {"loginId", &KestrinConfig::getLoginId, &KestrinConfig::setLoginId},
    {"password", &KestrinConfig::getPassword, &KestrinConfig::setPassword},
};

/// All four texts, each with its name behind `prefix`, and the property "kept".
Config filledConfig(char const * prefix) {
    Config const config = new KestrinConfig;
    for (TextField const & field : TEXT_FIELDS) {
        ((*config).*field.set)(CString(prefix) + field.name);
    }
    config->setProperty("kept", prefix);
    return config;
}

void expectTexts(KestrinConfig const & config, char const * prefix) {
    for (TextField const & field : TEXT_FIELDS) {
        EXPECT_EQ((config.*field.get)(), CString(prefix) + field.name);
    }
}

TEST(KestrinConfig, BeginsEmptyAndUnowned) {
    Config const config = new KestrinConfig;
    EXPECT_EQ(config->getRefCount(), 1);
    EXPECT_EQ(config->getPropertyCount(), 0u);
    for (TextField const & field : TEXT_FIELDS) {
        EXPECT_EQ(((*config).*field.get)(), "") << field.name;
    }
}

TEST(KestrinConfig, EachTextIsItsOwn) {
    for (TextField const & changed : TEXT_FIELDS) {
        Config const config = new KestrinConfig;
        ((*config).*changed.set)(CString("a\0b", 3));
        for (TextField const & field : TEXT_FIELDS) {
            EXPECT_EQ(((*config).*field.get)(), field.set == changed.set ? CString("a\0b", 3) : "")
                << changed.name << " " << field.name;
        }
    }
}

TEST(KestrinConfig, PropertiesBehaveAsThoseOfASimplePropertySetAndLeaveTheTextsAlone) {
    Config const config = filledConfig("own ");
    config->removeAllProperties();
    test::expectLikeSimplePropertySet(*config, 11);
    expectTexts(*config, "own ");
}

TEST(KestrinConfig, ACopyIsDeepAndUnowned) {
    Config const source = filledConfig("old ");
    Config const second = source;
    Config const copy = new KestrinConfig(*source);
    EXPECT_EQ(copy->getRefCount(), 1);
    EXPECT_EQ(source->getRefCount(), 2);
    expectTexts(*copy, "old ");
    EXPECT_EQ(propertiesOf(*copy), propertiesOf(*source));

    copy->setProperty("kept", "changed");
    copy->setProperty("more", "x");
    copy->setLoginId("changed");
    expectTexts(*source, "old ");
    EXPECT_EQ(source->getProperty("kept"), "old ");
    EXPECT_FALSE(source->hasProperty("more"));

    source->removeAllProperties();
    EXPECT_EQ(copy->getProperty("kept"), "changed");
}

TEST(KestrinConfig, AssignmentReplacesAllAndKeepsTheCount) {
    Config const source = filledConfig("new ");
    Config const sourceToo = source;
    Config const sourceAgain = source;
    Config const target = filledConfig("old ");
    Config const targetToo = target;
    target->setProperty("gone", "x");
    KestrinConfig & result = *target = *source;
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(target->getRefCount(), 2);
    EXPECT_EQ(source->getRefCount(), 3);
    expectTexts(*target, "new ");
    EXPECT_EQ(propertiesOf(*target), propertiesOf(*source));
    target->setProperty("kept", "changed");
    EXPECT_EQ(source->getProperty("kept"), "new ");
}

TEST(KestrinConfig, AssigningItselfChangesNothing) {
    Config const config = filledConfig("own ");
    KestrinConfig const & itself = *config;
    *config = itself;
    EXPECT_EQ(config->getRefCount(), 1);
    expectTexts(*config, "own ");
    EXPECT_EQ(config->getProperty("kept"), "own ");
}

TEST(KestrinConfig, AddsNoVirtualOperationToThoseOfAPropertySet) {
    test::expectPropertySetOrder<KestrinConfig>();
    for (TextField const & field : TEXT_FIELDS) {
        EXPECT_EQ(slotOf(field.get), std::nullopt) << field.name;
        EXPECT_EQ(slotOf(field.set), std::nullopt) << field.name;
    }
}

}  // namespace
}  // namespace tvk
