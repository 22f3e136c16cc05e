#include "tvk/platform/EmbeddedText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "tests/support/PrintCString.h"

namespace {

using tvk::platform::EmbeddedText;

/// An object of some bytes with a text behind it. Ending it is what an object does that goes before the
/// copies of its text; the sanitizers see what is freed too early, twice or never.
class Holder {
public:
    static constexpr std::size_t OBJECT_SIZE = 24;

    explicit Holder(std::string_view text)
        : block_(std::malloc(EmbeddedText::blockSize(OBJECT_SIZE, text.size()))) {
        std::memcpy(room(), text.data(), text.size());
        text_ =
            EmbeddedText::firstText(block_, OBJECT_SIZE, static_cast<unsigned int>(text.size()));
    }
    Holder(Holder const &) = delete;
    Holder & operator=(Holder const &) = delete;
    ~Holder() {
        text_.Empty();
        EmbeddedText::leave(room());
    }

    CString const & text() const { return text_; }
    char * room() const { return EmbeddedText::roomIn(block_, OBJECT_SIZE); }

private:
    void * block_;
    CString text_;
};

/// A copy of the text of a new object; `holder` is that, or null where the copy is to outlive it.
CString copyOf(std::string_view original, bool outlives, Holder *& holder) {
    holder = new Holder(original);
    CString copy = holder->text();
    if (outlives) {
        delete std::exchange(holder, nullptr);
    }
    return copy;
}

TEST(EmbeddedText, StandsBehindItsObject) {
    Holder const holder("abc");
    EXPECT_EQ(holder.text(), "abc");
    EXPECT_EQ(holder.text().GetLength(), 3);
    EXPECT_EQ(holder.text().GetString(), holder.room());
    EXPECT_EQ(holder.text().GetString()[3], '\0');
}

TEST(EmbeddedText, HoldsNulBytes) {
    Holder const holder(std::string_view("a\0b", 3));
    EXPECT_EQ(holder.text(), CString("a\0b", 3));
}

TEST(EmbeddedText, IsSharedByItsCopies) {
    Holder const holder("abc");
    CString const copy = holder.text();
    CString const another = copy;
    EXPECT_EQ(another.GetString(), holder.room());
}

TEST(EmbeddedText, KnowsWhetherTheObjectHasItAlone) {
    Holder const holder("abc");
    EXPECT_TRUE(EmbeddedText::isAlone(holder.room(), holder.text()));
    CString const same = "abc";
    EXPECT_FALSE(EmbeddedText::isAlone(holder.room(), same));
    {
        CString const copy = holder.text();
        EXPECT_FALSE(EmbeddedText::isAlone(holder.room(), holder.text()));
    }
    EXPECT_TRUE(EmbeddedText::isAlone(holder.room(), holder.text()));
}

struct Change {
    char const * name;
    std::function<void(CString &)> apply;
};

// Each with texts that fit and texts that do not fit where the text stands.
Change const CHANGES[] = {
    {"nothing", [](CString &) {}},
    {"SetAt", [](CString & text) { text.SetAt(1, 'X'); }},
    {"AppendChar", [](CString & text) { text.AppendChar('X'); }},
    {"Append", [](CString & text) { text.Append("a longer text than there is room for"); }},
    {"Append itself", [](CString & text) { text.Append(text); }},
    {"Append a part of itself", [](CString & text) { text.Append(text.GetString() + 1, 2); }},
    {"Insert", [](CString & text) { text.Insert(1, "X"); }},
    {"Insert itself", [](CString & text) { text.Insert(1, text); }},
    {"Trim", [](CString & text) { text.Trim(); }},
    {"Trim what was cut", [](CString & text) { text.Trim().Append("XYZ"); }},
    {"Preallocate nothing", [](CString & text) { text.Preallocate(0); }},
    {"Preallocate less", [](CString & text) { text.Preallocate(2); }},
    {"Preallocate more", [](CString & text) { text.Preallocate(1000); }},
    {"Empty", [](CString & text) { text.Empty(); }},
    {"assign", [](CString & text) { text = "other"; }},
    {"assign itself", [](CString & text) { text = *&text; }},
    {"assign a part of itself", [](CString & text) { text = text.GetString() + 2; }},
    {"move out and back",
     [](CString & text) {
         CString other = std::move(text);
         text = std::move(other);
     }},
    {"Mid", [](CString & text) { text = text.Mid(1, 2); }},
    {"Format", [](CString & text) { text.Format("%s-%s", text.GetString(), text.GetString()); }},
    {"AppendFormat", [](CString & text) { text.AppendFormat("%d", 7); }},
    {"GetBuffer as it is",
     [](CString & text) {
         text.GetBuffer()[0] = 'X';
         text.ReleaseBuffer();
     }},
    {"GetBuffer for less",
     [](CString & text) {
         text.GetBuffer(1)[0] = 'X';
         text.ReleaseBuffer(1);
     }},
    {"GetBuffer for less, then more",
     [](CString & text) {
         text.GetBuffer(1);
         text.ReleaseBuffer(1);
         text.Append("0123456789");
     }},
    {"GetBuffer for more",
     [](CString & text) {
         std::memset(text.GetBuffer(100), 'X', 100);
         text.ReleaseBuffer(100);
     }},
    {"ReleaseBuffer alone", [](CString & text) { text.ReleaseBuffer(); }},
};

TEST(EmbeddedText, ChangesAsAnyText) {
    for (Change const & change : CHANGES) {
        for (bool const outlives : {false, true}) {
            SCOPED_TRACE(change.name);
            SCOPED_TRACE(outlives ? "after the object" : "beside the object");
            constexpr std::string_view ORIGINAL = " some text ";
            CString expected(ORIGINAL.data(), static_cast<int>(ORIGINAL.size()));
            change.apply(expected);
            Holder * holder = nullptr;
            CString copy = copyOf(ORIGINAL, outlives, holder);
            CString const untouched = copy;
            change.apply(copy);
            EXPECT_EQ(copy, expected);
            EXPECT_EQ(untouched, " some text ");
            if (holder != nullptr) {
                EXPECT_EQ(holder->text(), " some text ");
            }
            delete holder;
            EXPECT_EQ(copy, expected);
            EXPECT_EQ(untouched, " some text ");
        }
    }
}

// Nobody else has it then, so it may change where it stands.
TEST(EmbeddedText, ChangesInItsLastCopy) {
    for (Change const & change : CHANGES) {
        SCOPED_TRACE(change.name);
        CString expected(" some text ");
        change.apply(expected);
        Holder * holder = nullptr;
        CString copy = copyOf(" some text ", true, holder);
        change.apply(copy);
        EXPECT_EQ(copy, expected);
        change.apply(copy);
        change.apply(expected);
        EXPECT_EQ(copy, expected);
    }
}

TEST(EmbeddedText, IsDroppedOnAnyThread) {
    for (int round = 0; round < 100; ++round) {
        Holder * const holder = new Holder("shared");
        std::thread other([copy = holder->text()] {
            CString const another = copy;
            EXPECT_EQ(another, "shared");
        });
        delete holder;
        other.join();
    }
}

}  // namespace
