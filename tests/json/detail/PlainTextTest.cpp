#include "tvk/json/detail/PlainText.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/ExactBuffer.h"

namespace tvk::detail {
namespace {

using test::ExactBuffer;

bool isPlain(char byte, HighBytes highBytes, bool escapesSlash) {
    auto const value = static_cast<unsigned char>(byte);
    return value >= 0x20 && byte != '"' && byte != '\\' && (byte != '/' || !escapesSlash) &&
           (value < 0x80 || highBytes == HighBytes::PLAIN);
}

template <HighBytes HIGH_BYTES, class Block>
void expectAsModelled(std::string const & text, bool escapesSlash) {
    std::size_t plain = 0;
    while (plain < text.size() && isPlain(text[plain], HIGH_BYTES, escapesSlash)) {
        ++plain;
    }
    ExactBuffer const input(text);
    PlainBytes<HIGH_BYTES, Block> const copier(escapesSlash);
    ExactBuffer output(std::string(text.size(), '?'));
    ASSERT_EQ(copier.copy(input, text.size(), output.data()), plain);
    ASSERT_EQ(std::string(output.data(), plain), text.substr(0, plain));
    if (text.size() <= Block::SIZE) {
        // What stands behind the text does not matter.
        ExactBuffer const start(text + std::string(platform::textRoom(text.size()) - text.size(),
                                                   text.size() % 2 == 0 ? '"' : 'x'));
        ExactBuffer block(std::string(Block::SIZE, '?'));
        ASSERT_EQ(copier.copyStart(start, text.size(), block.data()), plain == text.size());
        ASSERT_EQ(std::string(block.data(), plain), text.substr(0, plain));
    }
    ExactBuffer whole(std::string(text.size(), '?'));
    bool const isAllPlain = plain == text.size();
    ASSERT_EQ(copier.copyAll(input, text.size(), whole.data()), isAllPlain);
    if (isAllPlain) {
        ASSERT_EQ(std::string(whole.data(), text.size()), text);
    }
}

template <class Block>
class PlainText : public testing::Test {
protected:
    static void expectAsModelledByAllRules(std::string const & text) {
        for (bool const escapesSlash : {false, true}) {
            expectAsModelled<HighBytes::PLAIN, Block>(text, escapesSlash);
            expectAsModelled<HighBytes::NEED_ATTENTION, Block>(text, escapesSlash);
        }
    }
};

#if TVK_TEXT_BLOCK_SSE2
using Blocks = testing::Types<WordBlock, Sse2Block>;
#else
using Blocks = testing::Types<WordBlock>;
#endif
TYPED_TEST_SUITE(PlainText, Blocks);

TYPED_TEST(PlainText, FindsEveryByteAtEveryPlace) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t length = 1; length <= 40; ++length) {
            for (std::size_t place = 0; place < length; ++place) {
                std::string text = "0123456789 abcdefghijklmnopqrstuvwxyz~\x7F#";
                text.resize(length, 'x');
                text[place] = static_cast<char>(byte);
                this->expectAsModelledByAllRules(text);
                if (this->HasFatalFailure()) {
                    FAIL() << "byte " << byte << " at " << place << " of " << length;
                }
            }
        }
    }
}

TYPED_TEST(PlainText, FindsTheFirstOfSeveralBytes) {
    constexpr char BYTES[] = {'\0', '\x1F', ' ', '"', '/', '\\', '\x7F', '\x80', '\xFF', 'x'};
    for (std::size_t length = 0; length <= 40; ++length) {
        for (std::size_t first = 0; first < length; ++first) {
            for (std::size_t second = first; second < length; ++second) {
                std::string text(length, 'x');
                text[second] = BYTES[(first + second) % sizeof BYTES];
                text[first] = BYTES[(first + 3 * second + length) % sizeof BYTES];
                this->expectAsModelledByAllRules(text);
            }
        }
        this->expectAsModelledByAllRules(std::string(length, 'x'));
        if (this->HasFatalFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace tvk::detail
