#include "tvk/values/detail/FieldShape.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

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

TEST(ShapeReference, KeepsTheShape) {
    CString const name("name");
    ShapeReference last;
    {
        ShapeReference const first(new FieldShape({&name}));
        ShapeReference second = first;
        last = std::move(second);
        EXPECT_EQ(last.get(), first.get());
        EXPECT_TRUE(second.isNull());
    }
    EXPECT_EQ(last->name(0), "name");
}

TEST(ShapeSource, HandsOutReferencesThatOutliveIt) {
    CString const name("name");
    std::vector<ShapeReference> references;
    {
        ShapeSource source;
        EXPECT_TRUE(source.isEmpty());
        source.set(new FieldShape({&name}));
        for (int i = 0; i < 10000; ++i) {
            references.push_back(source.next());
        }
    }
    EXPECT_EQ(references.back()->name(0), "name");
    references.erase(references.begin() + 1, references.end());
    EXPECT_EQ(references.front()->name(0), "name");
}

TEST(ShapeSource, HandsOutReferencesThatEndOnAnyThread) {
    CString const name("name");
    ShapeSource source;
    source.set(new FieldShape({&name}));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        std::vector<ShapeReference> references;
        for (int k = 0; k < 3000; ++k) {
            references.push_back(source.next());
        }
        threads.emplace_back([references = std::move(references)]() mutable {
            while (!references.empty()) {
                ShapeReference const copy = references.back();
                EXPECT_EQ(copy->count(), 1u);
                references.pop_back();
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    EXPECT_EQ(source.next()->name(0), "name");
}

}  // namespace
}  // namespace tvk::detail
