#include "tvk/json/detail/NameSequences.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/ExactBuffer.h"

namespace tvk::detail {
namespace {

using Sequence = NameSequences::Sequence;

class NameSequencesTest : public testing::Test {
protected:
    Sequence * extended(Sequence & sequence, std::string const & name) {
        test::ExactBuffer const bytes(name);
        return sequences_.extended(sequence, bytes.data(), static_cast<unsigned int>(name.size()));
    }

    /// The sequence of all these names, each of one byte.
    Sequence & of(std::string const & names) {
        Sequence * at = sequences_.empty();
        for (char const name : names) {
            at = extended(*at, std::string(1, name));
        }
        return *at;
    }

    static std::string namesOf(Sequence const & sequence) {
        std::string names;
        for (CString const * const name : sequence.names()) {
            names += name->GetString();
        }
        return names;
    }

    NameSequences sequences_;
};

TEST_F(NameSequencesTest, FindsAgainWhatHasComeBefore) {
    Sequence & first = of("abc");
    Sequence & other = of("abd");
    EXPECT_NE(&first, &other);
    EXPECT_EQ(&of("abc"), &first);
    EXPECT_EQ(&of("abd"), &other);
    EXPECT_EQ(&of("abd"), &other);
}

TEST_F(NameSequencesTest, TellsItsNamesInTheirOrder) {
    EXPECT_EQ(namesOf(*sequences_.empty()), "");
    EXPECT_EQ(namesOf(of("cabb")), "cabb");
    EXPECT_EQ(of("cab").name(), "b");
}

TEST_F(NameSequencesTest, SeesAllBytesOfAName) {
    Sequence & empty = *sequences_.empty();
    Sequence * const plain = extended(empty, "a");
    Sequence * const withNul = extended(empty, std::string("a\0", 2));
    Sequence * const high = extended(empty, "a\x80");
    EXPECT_NE(plain, withNul);
    EXPECT_NE(withNul, high);
    EXPECT_EQ(extended(empty, std::string("a\0", 2)), withNul);
    EXPECT_EQ(extended(empty, ""), extended(empty, ""));
}

TEST_F(NameSequencesTest, GivesAllRecordsOfASequenceOneShape) {
    ShapeReference const shape = of("ba").shape();
    EXPECT_EQ(of("ba").shape().get(), shape.get());
    EXPECT_EQ(shape->count(), 2u);
    EXPECT_EQ(shape->placeOfArrival(0), 1u);
}

TEST_F(NameSequencesTest, FindsANameInItsFormOnTheWire) {
    std::string const longName(40, 'n');
    for (std::string const & name : {std::string(), std::string("p"), std::string("exactly 13..."),
                                     std::string("one more: 14.."), longName}) {
        SCOPED_TRACE(name);
        NameSequences sequences;
        Sequence & known = *sequences.extended(*sequences.empty(), name.data(),
                                               static_cast<unsigned int>(name.size()));
        std::string const wire = '"' + name + "\":";
        auto const found = [&](std::string const & text) {
            test::ExactBuffer const bytes(text);
            return sequences.empty()->next(bytes.data(), bytes.length());
        };
        EXPECT_EQ(known.wireSize(), wire.size());
        EXPECT_EQ(found(wire + "                "), &known);
        EXPECT_EQ(found(wire), wire.size() < 16 ? nullptr : &known);
        EXPECT_EQ(found(""), nullptr);
        for (std::size_t i = 0; i < wire.size(); ++i) {
            std::string other = wire + "                ";
            other[i] = '~';
            EXPECT_EQ(found(other), nullptr) << i;
        }
        EXPECT_EQ(found(wire.substr(0, wire.size() - 1) + " :              "), nullptr);
    }
}

TEST_F(NameSequencesTest, LooksCloserAtNamesThatMayStandInOtherForms) {
    for (std::string const & name :
         std::vector<std::string>{"caf\xC3\xA9", "a\"b", "a\\b", {"a\0b", 3}}) {
        NameSequences sequences;
        Sequence & known = *sequences.extended(*sequences.empty(), name.data(),
                                               static_cast<unsigned int>(name.size()));
        std::string const text = '"' + name + "\":                  ";
        EXPECT_EQ(sequences.empty()->next(text.data(), text.size()), nullptr);
        EXPECT_EQ(known.wireSize(), 0u);
    }
}

TEST_F(NameSequencesTest, FindsWhatFollowedEarlierToo) {
    Sequence & first = of("a");
    of("b");
    EXPECT_EQ(sequences_.empty()->next("\"a\":              ", 18), &first);
    EXPECT_EQ(sequences_.empty()->next("\"c\":              ", 18), nullptr);
}

TEST_F(NameSequencesTest, PassesOverANameThatBringsNoField) {
    Sequence & both = of("ab");
    Sequence * const passedOver = sequences_.lastPassedOver(both);
    EXPECT_EQ(sequences_.lastPassedOver(both), passedOver);
    EXPECT_NE(passedOver, &of("a"));
    EXPECT_EQ(namesOf(*passedOver), "a");
    EXPECT_EQ(passedOver->shape().get(), of("a").shape().get());
    Sequence * const third = extended(*passedOver, "c");
    EXPECT_EQ(namesOf(*third), "ac");
    EXPECT_EQ(third->shape()->count(), 2u);
    EXPECT_TRUE(sequences_.lastPassedOver(of("x"))->shape().isNull());
}

TEST_F(NameSequencesTest, KeepsNoLongName) {
    EXPECT_NE(extended(*sequences_.empty(), std::string(64, 'a')), nullptr);
    EXPECT_EQ(extended(*sequences_.empty(), std::string(65, 'a')), nullptr);
}

TEST_F(NameSequencesTest, KeepsNoLongSequence) {
    Sequence & longest = of(std::string(128, 'a'));
    EXPECT_EQ(namesOf(longest).size(), 128u);
    EXPECT_EQ(extended(longest, "a"), nullptr);
}

TEST_F(NameSequencesTest, KeepsFewNamesThatFollowOneSequence) {
    Sequence & empty = *sequences_.empty();
    for (int i = 0; i < 32; ++i) {
        ASSERT_NE(extended(empty, std::to_string(i)), nullptr);
    }
    EXPECT_EQ(extended(empty, "one more"), nullptr);
    EXPECT_NE(extended(empty, "0"), nullptr);
}

TEST_F(NameSequencesTest, StartsAnewOnceItIsFull) {
    int kept = 0;
    for (int i = 0; i < 32; ++i) {
        Sequence & first = *extended(*sequences_.empty(), std::to_string(i));
        ++kept;
        for (int k = 0; k < 32; ++k) {
            Sequence * second = extended(first, std::to_string(k));
            kept += second != nullptr;
            for (int m = 0; second != nullptr && m < 3; ++m) {
                kept += extended(*second, std::to_string(m)) != nullptr;
            }
        }
        if (kept == 2048) {
            break;
        }
    }
    ASSERT_EQ(kept, 2048);
    ShapeReference const shape = extended(*sequences_.empty(), "0")->shape();
    EXPECT_EQ(extended(*sequences_.empty(), "one more"), nullptr);
    sequences_.forgetIfFull();
    EXPECT_NE(extended(*sequences_.empty(), "one more"), nullptr);
    EXPECT_EQ(shape->name(0), "0");
}

TEST_F(NameSequencesTest, ForgetsNothingWhileThereIsRoom) {
    Sequence & known = of("abc");
    sequences_.forgetIfFull();
    EXPECT_EQ(&of("abc"), &known);
}

}  // namespace
}  // namespace tvk::detail
