#include "tvk/values/SimplePropertySet.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/PropertySetOrder.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

using test::slotOf;
using Properties = RefCountedPtr<SimplePropertySet>;
using Names = std::vector<CString>;

static_assert(!std::is_destructible_v<SimplePropertySet>);
static_assert(!std::is_copy_constructible_v<SimplePropertySet>);
static_assert(!std::is_copy_assignable_v<SimplePropertySet>);

/// Properties that are not the library's: in the order in which they were set, and a list of the
/// operations that were called.
class OwnProperties : public PropertySet {
public:
    ~OwnProperties() override = default;

    std::vector<std::pair<CString, CString>> properties;
    mutable std::vector<std::string> calls;

    void setProperty(CString const & name, CString const & value) override {
        calls.push_back("setProperty");
        properties.emplace_back(name, value);
    }
    CString getProperty(CString const & name) const override {
        calls.push_back(std::string("getProperty ") + name.GetString());
        for (auto const & property : properties) {
            if (property.first == name) {
                return property.second;
            }
        }
        return CString();
    }
    bool hasProperty(CString const &) const override {
        calls.push_back("hasProperty");
        return false;
    }
    void addProperties(PropertySet const &) override { calls.push_back("addProperties"); }
    void mergeProperties(PropertySet const &) override { calls.push_back("mergeProperties"); }
    void removeProperty(CString const &) override { calls.push_back("removeProperty"); }
    void removeAllProperties() override { calls.push_back("removeAllProperties"); }
    std::vector<CString> getPropertyNames() const override {
        calls.push_back("getPropertyNames");
        Names names;
        for (auto const & property : properties) {
            names.push_back(property.first);
        }
        return names;
    }
    unsigned int getPropertyCount() const override {
        calls.push_back("getPropertyCount");
        return static_cast<unsigned int>(properties.size());
    }
};

std::string contentOf(PropertySet const & properties) {
    std::string content;
    for (CString const & name : properties.getPropertyNames()) {
        content += content.empty() ? "" : " ";
        content += name.GetString();
        content += "=";
        content += properties.getProperty(name).GetString();
    }
    return content;
}

Properties propertiesOf(std::vector<std::pair<char const *, char const *>> const & all) {
    Properties const properties(new SimplePropertySet);
    for (auto const & [name, value] : all) {
        properties->setProperty(name, value);
    }
    return properties;
}

TEST(SimplePropertySet, StartsEmpty) {
    Properties const properties(new SimplePropertySet);
    EXPECT_EQ(properties->getPropertyCount(), 0u);
    EXPECT_EQ(properties->getPropertyNames(), Names{});
    EXPECT_EQ(properties->getRefCount(), 1);
}

TEST(SimplePropertySet, SetsAndOverwrites) {
    Properties const properties = propertiesOf({{"b", "1"}, {"a", "2"}, {"C", "3"}, {"b", "4"}});
    EXPECT_EQ(contentOf(*properties), "C=3 a=2 b=4");
    EXPECT_EQ(properties->getPropertyCount(), 3u);
}

TEST(SimplePropertySet, AMissIsAnEmptyText) {
    Properties const properties = propertiesOf({{"empty", ""}});
    EXPECT_EQ(properties->getProperty("missing"), "");
    EXPECT_FALSE(properties->hasProperty("missing"));
    EXPECT_EQ(properties->getProperty("empty"), "");
    EXPECT_TRUE(properties->hasProperty("empty"));
    EXPECT_EQ(properties->getPropertyCount(), 1u);
}

TEST(SimplePropertySet, Removes) {
    Properties const properties = propertiesOf({{"a", "1"}, {"b", "2"}});
    properties->removeProperty("missing");
    properties->removeProperty("a");
    EXPECT_EQ(contentOf(*properties), "b=2");
    properties->removeAllProperties();
    properties->removeAllProperties();
    EXPECT_EQ(properties->getPropertyCount(), 0u);
}

TEST(SimplePropertySet, ConveniencesTakePlainTexts) {
    test::ExactBuffer const bytes("value");
    Properties const properties(new SimplePropertySet);
    CString const name = "a";
    properties->setProperty(name, "1");
    properties->setProperty(CString("b"), bytes.data(), 3);
    properties->setProperty("c", "3");
    properties->setProperty("d", bytes.data(), bytes.length());
    properties->setProperty("e", "a\0b", 3);
    EXPECT_EQ(properties->getProperty("a"), "1");
    EXPECT_EQ(properties->getProperty("b"), "val");
    EXPECT_EQ(properties->getProperty("c"), "3");
    EXPECT_EQ(properties->getProperty("d"), "value");
    EXPECT_EQ(properties->getProperty("e"), CString("a\0b", 3));
    EXPECT_TRUE(properties->hasProperty("a"));
}

TEST(SimplePropertySet, NamesAreOrderedAsUnsignedBytes) {
    Properties const properties(new SimplePropertySet);
    Names const ordered = {"", "A", CString("A\0", 2), "AA", "a", "\x80"};
    for (std::size_t i = ordered.size(); i-- > 0;) {
        properties->setProperty(ordered[i], CString("v"));
    }
    EXPECT_EQ(properties->getPropertyNames(), ordered);
}

TEST(SimplePropertySet, AddingLetsTheIncomingValuesWin) {
    Properties const target = propertiesOf({{"a", "1"}, {"z", "9"}});
    target->addProperties(*propertiesOf({{"a", "2"}, {"b", "3"}}));
    EXPECT_EQ(contentOf(*target), "a=2 b=3 z=9");
    target->addProperties(*target);
    EXPECT_EQ(contentOf(*target), "a=2 b=3 z=9");
}

TEST(SimplePropertySet, MergingLetsTheExistingValuesWin) {
    Properties const target = propertiesOf({{"a", "1"}, {"e", ""}, {"z", "9"}});
    target->mergeProperties(*propertiesOf({{"a", "2"}, {"b", "3"}, {"e", "4"}}));
    EXPECT_EQ(contentOf(*target), "a=1 b=3 e= z=9");
    target->mergeProperties(*target);
    EXPECT_EQ(contentOf(*target), "a=1 b=3 e= z=9");
}

TEST(SimplePropertySet, AddingReadsEveryValueThroughTheInterface) {
    RefCountedPtr<OwnProperties> const source(new OwnProperties);
    source->properties = {{"b", "1"}, {"a", "2"}};
    Properties const target = propertiesOf({{"a", "0"}});
    target->addProperties(*source);
    EXPECT_EQ(contentOf(*target), "a=2 b=1");
    EXPECT_EQ(source->calls, (std::vector<std::string>{"getPropertyNames", "getPropertyCount",
                                                       "getProperty b", "getProperty a"}));
}

TEST(SimplePropertySet, MergingReadsOnlyWhatIsMissing) {
    RefCountedPtr<OwnProperties> const source(new OwnProperties);
    source->properties = {{"b", "1"}, {"a", "2"}};
    Properties const target = propertiesOf({{"a", "0"}});
    target->mergeProperties(*source);
    EXPECT_EQ(contentOf(*target), "a=0 b=1");
    EXPECT_EQ(source->calls,
              (std::vector<std::string>{"getPropertyNames", "getPropertyCount", "getProperty b"}));
}

TEST(SimplePropertySet, RandomOperationsFollowAPlainMap) {
    std::mt19937 random(5);
    Properties const target(new SimplePropertySet);
    std::map<std::string, std::string> model;
    for (int step = 0; step < 2000; ++step) {
        std::string const name(1, static_cast<char>('a' + random() % 8));
        std::string const value = std::to_string(random() % 10);
        Properties const other(new SimplePropertySet);
        std::map<std::string, std::string> otherModel;
        for (int i = 0; i < 3; ++i) {
            std::string const key(1, static_cast<char>('a' + random() % 8));
            other->setProperty(key.c_str(), std::to_string(i).c_str());
            otherModel[key] = std::to_string(i);
        }
        switch (random() % 4) {
            case 0:
                target->setProperty(name.c_str(), value.c_str());
                model[name] = value;
                break;
            case 1:
                target->removeProperty(name.c_str());
                model.erase(name);
                break;
            case 2:
                target->addProperties(*other);
                for (auto const & property : otherModel) {
                    model[property.first] = property.second;
                }
                break;
            default:
                target->mergeProperties(*other);
                model.insert(otherModel.begin(), otherModel.end());
        }
        std::string content;
        for (auto const & property : model) {
            content += (content.empty() ? "" : " ") + property.first + "=" + property.second;
        }
        ASSERT_EQ(contentOf(*target), content);
        ASSERT_EQ(target->getPropertyCount(), model.size());
    }
}

TEST(PropertySet, ConveniencesCallTheOperations) {
    RefCountedPtr<OwnProperties> const own(new OwnProperties);
    PropertySet & properties = *own;
    properties.setProperty(CString("a"), "1");
    properties.setProperty(CString("b"), "123", 2);
    properties.setProperty("c", "3");
    properties.setProperty("d", "123", 0);
    EXPECT_EQ(properties.getProperty("b"), "12");
    EXPECT_FALSE(properties.hasProperty("a"));
    EXPECT_EQ(own->calls,
              (std::vector<std::string>{"setProperty", "setProperty", "setProperty", "setProperty",
                                        "getProperty b", "hasProperty"}));
    EXPECT_EQ(own->properties.back().second, "");
}

TEST(PropertySet, DeliberateAssignmentTakesOverTheCountAlone) {
    RefCountedPtr<OwnProperties> const source(new OwnProperties);
    RefCountedPtr<OwnProperties> const second(source);
    RefCountedPtr<OwnProperties> const target(new OwnProperties);
    source->properties = {{"a", "1"}};
    static_cast<PropertySet &>(*target) = *source;
    EXPECT_EQ(target->getRefCount(), 2);
    EXPECT_TRUE(target->properties.empty());
    target->removeRef();
}

TEST(PropertySetOrder, StandsBehindThatOfRefCounted) {
    test::expectPropertySetOrder<PropertySet>();
    test::expectPropertySetOrder<SimplePropertySet>();
}

class OneMore : public PropertySet {
public:
    virtual void oneMore() {}
};

TEST(PropertySetOrder, EndsWithTheCount) { EXPECT_EQ(slotOf(&OneMore::oneMore), 12u); }

}  // namespace
}  // namespace tvk
