#include "tvk/values/detail/FieldShape.h"

#include <gtest/gtest.h>

#include <string>

namespace tvk::detail {
namespace {

FieldShape shapeOf(std::vector<CString> const & arrival) {
    std::vector<CString const *> pointers;
    for (CString const & name : arrival) {
        pointers.push_back(&name);
    }
    return FieldShape(pointers);
}

std::string namesOf(FieldShape const & shape) {
    std::string names;
    for (std::size_t place = 0; place < shape.count(); ++place) {
        names += shape.name(place).GetString();
    }
    return names;
}

TEST(FieldShape, OrdersNamesByTheirBytes) {
    EXPECT_EQ(namesOf(shapeOf({"b", "a", "C", "\x80", "ab"})), "Caabb\x80");
}

TEST(FieldShape, TellsThePlaceOfEachArrival) {
    FieldShape const shape = shapeOf({"b", "a", "c"});
    EXPECT_EQ(shape.placeOfArrival(0), 1u);
    EXPECT_EQ(shape.placeOfArrival(1), 0u);
    EXPECT_EQ(shape.placeOfArrival(2), 2u);
}

TEST(FieldShape, GivesANameThatComesAgainOnePlace) {
    FieldShape const shape = shapeOf({"b", "a", "b"});
    EXPECT_EQ(shape.count(), 2u);
    EXPECT_EQ(shape.placeOfArrival(0), 1u);
    EXPECT_EQ(shape.placeOfArrival(2), 1u);
}

TEST(FieldShape, FindsWhatIsThere) {
    FieldShape const shape = shapeOf({"b", "", CString("a\0b", 3)});
    EXPECT_EQ(shape.find(""), 0u);
    EXPECT_EQ(shape.find(CString("a\0b", 3)), 1u);
    EXPECT_EQ(shape.find("b"), 2u);
    EXPECT_EQ(shape.find("a"), shape.count());
    EXPECT_EQ(shape.find("c"), shape.count());
    EXPECT_EQ(shapeOf({}).find("a"), 0u);
}

}  // namespace
}  // namespace tvk::detail
