#pragma once

#include <cstddef>
#include <random>
#include <string>

#include "tests/support/FrameModel.h"

namespace tvk::test {

/// Random frames from a fixed seed, sound ones and spoilt ones.
class RandomFrames {
public:
    explicit RandomFrames(unsigned int seed) : random_(seed) {}

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }

    PlainFrame frame() {
        constexpr int KINDS[] = {1, 2, 3, 3, 3, 16, 17, 18, 19, 20};
        PlainFrame frame = parts(2);
        frame.kind = KINDS[below(10)];
        frame.isFailure = frame.kind == FRAME_REPLY && below(3) == 0;
        frame.number = below(2) == 0 ? below(1000) : random_();
        return frame;
    }

    /// One byte of it is another one, a byte is missing, or there is one too many.
    std::string spoilt(PlainFrame const & frame) {
        std::string bytes = bytesOf(frame);
        std::size_t const at = random_() % (below(2) == 0 ? 24 : bytes.size());
        auto const byte = static_cast<char>(random_() & 0xffU);
        switch (below(6)) {
            case 0:
                bytes.erase(at, 1);
                break;
            case 1:
                bytes.insert(at, 1, byte);
                break;
            case 2:
                bytes[at] = byte;
                break;
            default:
                bytes[at] =
                    static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ 1U << below(8));
                break;
        }
        return bytes;
    }

private:
    PlainFrame parts(int depth) {
        PlainFrame frame;
        frame.type = text();
        frame.subject = text();
        if (below(4) == 0) {
            frame.headerFields = text();
        }
        if (depth > 0 && below(4) == 0) {
            frame.subMessages.emplace();
            for (unsigned int i = below(4); i > 0; --i) {
                frame.subMessages->push_back(parts(depth - 1));
                frame.subMessages->back().kind = static_cast<int>(below(4));
                if (below(2) == 0) {
                    frame.subMessages->back().requestId = text();
                }
            }
        }
        frame.body = text();
        return frame;
    }

    std::string text() {
        constexpr char const * PIECES[] = {
            "quote", "7203", "\xe6\xa0\xaa", "\xc3\xa9", "\xf0\x9f\x98\x80", "{\"a\":1}", "x"};
        std::string text;
        for (unsigned int i = below(5); i > 0; --i) {
            text += PIECES[below(7)];
        }
        return text;
    }

    std::mt19937_64 random_;
};

}  // namespace tvk::test
