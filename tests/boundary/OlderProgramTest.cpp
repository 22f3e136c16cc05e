// A program that was built when these members were no inline functions: it knows their declarations
// alone, and the library still has their symbols.

#include <gtest/gtest.h>

#include "tvk/platform/Export.h"

namespace tvk {

class ErrorInfo;

class TVK_API JsonUtil {
public:
    static int utf8Encode(char * buffer, unsigned int bufferSize, int codePoint);
    static int nextUtf8Char(char const * data, unsigned int length, unsigned int position,
                            unsigned int * byteCount);
    static int nextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                             unsigned int * byteCount);
};

class TVK_API StringUtil {
public:
    static int utf8Encode(char * buffer, unsigned int bufferSize, int codePoint);
    static int nextUtf8Char(char const * data, unsigned int length, unsigned int position,
                            unsigned int * byteCount);
    static int nextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                             unsigned int * byteCount);
    static int nextUtf8Char(char const * data, unsigned int length, unsigned int * codePoint,
                            ErrorInfo * error);
};

namespace {

template <class Util>
class OlderProgram : public ::testing::Test {};

using Utils = ::testing::Types<JsonUtil, StringUtil>;
TYPED_TEST_SUITE(OlderProgram, Utils);

TYPED_TEST(OlderProgram, EncodesAndDecodes) {
    for (int const codePoint : {0x41, 0xE9, 0x3042, 0x1F600, 0x20000}) {
        char bytes[6];
        auto const size =
            static_cast<unsigned int>(TypeParam::utf8Encode(bytes, sizeof bytes, codePoint));
        unsigned int checkedSize = 0;
        unsigned int trustedSize = 0;
        EXPECT_EQ(TypeParam::nextUtf8Char(bytes, size, 0, &checkedSize), codePoint);
        EXPECT_EQ(TypeParam::nextUtf8Char4(bytes, size, 0, &trustedSize), codePoint);
        EXPECT_EQ(checkedSize, size);
        EXPECT_EQ(trustedSize, size);
    }
}

TEST(OlderProgramOfErrorInfo, DecodesWithAReport) {
    unsigned int codePoint = 0;
    ErrorInfo * const error = nullptr;
    EXPECT_EQ(StringUtil::nextUtf8Char("\xE3\x81\x82", 3U, &codePoint, error), 3);
    EXPECT_EQ(codePoint, 0x3042U);
}

}  // namespace

}  // namespace tvk
