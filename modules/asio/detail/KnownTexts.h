#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "tvk/json/SimpleObjectCache.h"
#include "tvk/platform/CString.h"
#include "tvk/platform/CodePage.h"

namespace tvk::detail {

/// Gives the texts in the application's code page for texts in UTF-8 that come again and again, such
/// as the types of messages, without making them anew.
///
/// Memory: PLACES texts of LONGEST bytes at most. One that comes newly takes the place of an older one;
///         a longer one is made anew each time.
/// Threads: one at a time.
class KnownTexts {
public:
    static constexpr std::size_t PLACES = 256;
    static constexpr std::size_t LONGEST = 128;

    /// Until the next call.
    CString const & text(std::string_view utf8) {
        if (utf8 == last_->utf8) {
            return last_->text;
        }
        return utf8.size() <= LONGEST ? find(utf8) : makeLong(utf8);
    }

private:
    struct Known {
        std::string utf8;
        CString text;
    };

    static unsigned int sizeOf(std::string_view text) {
        return static_cast<unsigned int>(text.size());
    }

    CString const & find(std::string_view utf8) {
        unsigned int const hash = SimpleObjectCache::hashCode(utf8.data(), sizeOf(utf8));
        Known & known = known_[hash % PLACES];
        if (utf8 != known.utf8) {
            CString text = platform::utf8ToAnsi(utf8.data(), sizeOf(utf8));
            known.utf8.assign(utf8);
            known.text = std::move(text);
        }
        last_ = &known;
        return known.text;
    }

    CString const & makeLong(std::string_view utf8) {
        long_ = platform::utf8ToAnsi(utf8.data(), sizeOf(utf8));
        return long_;
    }

    // An empty text is its own conversion, so fresh places hold the right one for it.
    std::array<Known, PLACES> known_;
    Known * last_ = &known_[0];
    CString long_;
};

}  // namespace tvk::detail
