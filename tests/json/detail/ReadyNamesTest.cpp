#include "tvk/json/detail/ReadyNames.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace tvk::detail {
namespace {

/// The texts of a shape's names in their order; "-" for one that is not ready.
std::vector<std::string> textsOf(FieldShape const & shape) {
    ReadyNames const & ready = ReadyNames::of(shape);
    std::vector<std::string> texts;
    for (std::size_t place = 0; place < shape.count(); ++place) {
        ReadyNames::Name const name = ready.names()[place];
        texts.push_back(name.length == ReadyNames::NOT_READY
                            ? "-"
                            : std::string(ready.texts() + name.start, name.length));
    }
    return texts;
}

std::vector<std::string> textsOf(std::vector<CString> const & names) {
    std::vector<CString const *> pointers;
    for (CString const & name : names) {
        pointers.push_back(&name);
    }
    return textsOf(FieldShape(pointers));
}

using Texts = std::vector<std::string>;

TEST(ReadyNames, StandBetweenCommaAndColonButForTheFirst) {
    EXPECT_EQ(textsOf({"b", "", "long name"}), (Texts{"\"\":", ",\"b\":", ",\"long name\":"}));
}

TEST(ReadyNames, HoldTheirEscapes) {
    EXPECT_EQ(textsOf({"a\"b\\c", "t\tn\nr\rf\fb\b", "\x01\x7F"}),
              (Texts{"\"\x01\x7F\":", ",\"a\\\"b\\\\c\":", ",\"t\\tn\\nr\\rf\\fb\\b\":"}));
}

TEST(ReadyNames, LeaveOutWhatOptionsAndCodePageDecide) {
    EXPECT_EQ(textsOf({"a/b", CString("n\0l", 3), "x", "y\x80", "z\xE6\x97\xA5"}),
              (Texts{"-", "-", ",\"x\":", "-", "-"}));
}

TEST(ReadyNames, AreMadeOnce) {
    CString const name("a");
    FieldShape const shape({&name});
    EXPECT_EQ(shape.companion(), nullptr);
    ReadyNames const & ready = ReadyNames::of(shape);
    EXPECT_EQ(&ReadyNames::of(shape), &ready);
    EXPECT_EQ(shape.companion(), &ready);
}

TEST(ReadyNames, AreTheSameForThreadsThatMeetAtTheMaking) {
    CString const name("name");
    for (int round = 0; round < 200; ++round) {
        FieldShape const shape({&name});
        ReadyNames const * seen[2] = {};
        std::thread other([&] { seen[0] = &ReadyNames::of(shape); });
        seen[1] = &ReadyNames::of(shape);
        other.join();
        ASSERT_EQ(seen[0], seen[1]);
        ASSERT_EQ(textsOf(shape), Texts{"\"name\":"});
    }
}

}  // namespace
}  // namespace tvk::detail
