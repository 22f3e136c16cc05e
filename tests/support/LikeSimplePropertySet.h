#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/TextBytes.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/values/SimplePropertySet.h"

namespace tvk::test {

/// Names and values in the order in which the set gives them.
inline std::vector<std::pair<std::string, std::string>> propertiesOf(PropertySet const & set) {
    std::vector<std::pair<std::string, std::string>> properties;
    for (CString const & name : set.getPropertyNames()) {
        properties.emplace_back(bytesOf(name), bytesOf(set.getProperty(name)));
    }
    return properties;
}

/// Random operations on `set` and on a SimplePropertySet beside it: all answers are the same. `set`
/// must be empty.
inline void expectLikeSimplePropertySet(PropertySet & set, unsigned int seed) {
    static char const * const NAMES[] = {"", "a", "B", "b", "host.name", "\x83\x5C", "b "};
    std::mt19937 random(seed);
    auto const pick = [&] { return textOf(NAMES[random() % std::size(NAMES)]); };
    RefCountedPtr<PropertySet> const model = new SimplePropertySet;
    for (int step = 0; step < 1000; ++step) {
        CString const name = pick();
        CString const value = step % 7 == 0 ? CString() : textOf(std::to_string(step));
        RefCountedPtr<PropertySet> const incoming = new SimplePropertySet;
        for (auto left = random() % 4; left > 0; --left) {
            incoming->setProperty(pick(), value);
        }
        auto const operation = random() % 10;
        auto const perform = [&](PropertySet & target) {
            switch (operation) {
                case 0:
                    return target.addProperties(*incoming);
                case 1:
                    return target.mergeProperties(*incoming);
                case 2:
                    return target.addProperties(target);
                case 3:
                    return target.mergeProperties(target);
                case 4:
                    return target.removeProperty(name);
                case 5:
                    return step % 5 == 0 ? target.removeAllProperties() : void();
                case 6:
                    return target.setProperty(name.GetString(), value.GetString());
                case 7:
                    return target.setProperty(name, "12345", 3);
                default:
                    return target.setProperty(name, value);
            }
        };
        perform(set);
        perform(*model);
        CString const asked = pick();
        ASSERT_EQ(propertiesOf(set), propertiesOf(*model)) << "seed " << seed << " step " << step;
        ASSERT_EQ(set.getPropertyCount(), model->getPropertyCount());
        ASSERT_EQ(set.hasProperty(asked), model->hasProperty(asked));
        ASSERT_EQ(set.hasProperty(asked.GetString()), model->hasProperty(asked));
        ASSERT_EQ(bytesOf(set.getProperty(asked)), bytesOf(model->getProperty(asked)));
        ASSERT_EQ(bytesOf(set.getProperty(asked.GetString())), bytesOf(model->getProperty(asked)));
    }
}

}  // namespace tvk::test
