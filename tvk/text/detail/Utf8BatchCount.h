#pragma once

#include "tvk/text/detail/Utf8Count.h"

namespace tvk::detail {

/// The walk over batches of bytes behind CountRegularUtf8.
///
/// Batch: Batch::SIZE bytes, of which it says whether they are ASCII, and whether trail bytes stand
///        exactly where the leads of up to 4 bytes before them announce some. A type of an unnamed
///        namespace, so that code for one processor is never linked into another's.
template <class Batch>
class Utf8BatchCount {
public:
    static Utf8Run count(char const * data, unsigned int length, unsigned int position) {
        if (isTrail(data[position])) {
            return {0, 0};
        }
        // The bytes before belong to the walk, which may have passed over leads inside longer
        // sequences. Such a lead would want a trail byte at `position`, where there is none.
        char const * const start = data + position;
        char const * const end = data + length;
        char const * at = start;
        unsigned int characters = 0;
        bool atCharacter = true;
        while (static_cast<unsigned int>(end - at) >= Batch::SIZE) {
            Batch const batch(at);
            if (batch.isAscii()) {
                if (!atCharacter && bytesOfOpenSequence(at) != 0) {
                    break;
                }
                characters += Batch::SIZE;
                atCharacter = true;
            } else {
                unsigned int trails = 0;
                if (!batch.isRegular(&trails)) {
                    break;
                }
                characters += Batch::SIZE - trails;
                atCharacter = false;
            }
            at += Batch::SIZE;
        }
        if (!atCharacter) {
            unsigned int const open = bytesOfOpenSequence(at);
            at -= open;
            characters -= open != 0 ? 1 : 0;
        }
        return {static_cast<unsigned int>(at - start), characters};
    }

private:
    /// How far behind `at`, which is behind a regular batch, a sequence starts that goes on there.
    static unsigned int bytesOfOpenSequence(char const * at) {
        for (unsigned int back = 1; back <= 3; ++back) {
            auto const byte = static_cast<unsigned char>(*(at - back));
            if (!isTrail(*(at - back))) {
                // C0 to DF announce one more byte, E0 to EF two, F0 to F7 three.
                unsigned int const announced = byte < 0xC0   ? 0
                                               : byte < 0xE0 ? 1
                                               : byte < 0xF0 ? 2
                                                             : 3;
                return announced >= back ? back : 0;
            }
        }
        return 0;
    }

    static bool isTrail(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }
};

}  // namespace tvk::detail
