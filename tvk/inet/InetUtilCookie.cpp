// Cookies: InetUtil::parseSetCookie.

#include <cstddef>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/inet/InetUtil.h"
#include "tvk/platform/CharacterClass.h"
#include "tvk/platform/Numbers.h"
#include "tvk/text/StringUtil.h"

namespace tvk {

namespace {

struct Attribute {
    char const * name;
    void (CookieInfo::*setValue)(CString const & value);  ///< null for the one that has none
};

/// In the order in which they are looked for.
constexpr Attribute ATTRIBUTES[] = {
    {"Comment", &CookieInfo::setComment}, {"Domain", &CookieInfo::setDomain},
    {"Max-Age", &CookieInfo::setMaxAge},  {"expires", &CookieInfo::setExpires},
    {"Path", &CookieInfo::setPath},       {"Secure", nullptr},
    {"Version", &CookieInfo::setVersion},
};

bool isLeading(char character) {
    return platform::isSpace(character) || character == ';' || character == ',';
}

bool isBetweenAttributes(char character) {
    return platform::isSpace(character) || character == ';';
}

bool isOfName(char character) { return platform::isAlnum(character) || character == '_'; }

/// Reads one cookie. The position never passes the first NUL at or behind `length`: the text is read
/// behind `length` only by stepping over a word, and no word has a NUL.
class SetCookieReader {
public:
    SetCookieReader(char const * text, std::size_t length, CookieInfo * cookie, ErrorInfo * error)
        : text_(text), length_(length), cookie_(cookie), error_(error) {}

    /// Returns the position where reading stopped.
    std::size_t read() {
        bool goesOn = readName() && readValue();
        while (goesOn && !isAtEnd()) {
            goesOn = readAttribute();
        }
        return position_;
    }

private:
    // Each of the three is false where reading stops before the end of the text.

    bool readName() {
        skipWhile(isLeading);
        if (stepOverWord("Set-Cookie:")) {
            skipWhile(platform::isSpace);
        }
        std::size_t const start = position_;
        skipWhile(isOfName);
        if (position_ == start) {
            return fail("invalid Set-Cookie: no cookie name");
        }
        cookie_->setName(textFrom(start));
        skipWhile(platform::isSpace);
        return true;
    }

    bool readValue() {
        if (stepOver(',')) {
            return false;
        }
        if (!stepOver('=')) {
            return true;  // attributes may follow all the same
        }
        skipWhile(platform::isSpace);
        if (stepOver(',')) {
            return false;
        }
        cookie_->setValue(takeValue());
        return true;
    }

    bool readAttribute() {
        skipWhile(isBetweenAttributes);
        Attribute const * const attribute = stepOverAttributeName();
        if (attribute == nullptr) {
            return false;
        }
        if (attribute->setValue == nullptr) {
            cookie_->setSecure(true);
            return true;
        }
        skipWhile(platform::isSpace);
        if (standsAt(',')) {
            return false;
        }
        if (!stepOver('=') && !isAtEnd()) {
            return fail(StringUtil::format("invalid Set-Cookie: '=' expected after '%s'...",
                                           attribute->name));
        }
        (cookie_->*attribute->setValue)(takeValue());
        return true;
    }

    Attribute const * stepOverAttributeName() {
        for (Attribute const & attribute : ATTRIBUTES) {
            if (stepOverWord(attribute.name)) {
                return &attribute;
            }
        }
        return nullptr;
    }

    CString takeValue() {
        std::size_t const start = position_;
        if (stepOver('"')) {
            skipWhile([](char character) { return character != '"'; });
            stepOver('"');
        } else {
            skipWhile([](char character) { return character != ';'; });
        }
        return textFrom(start);
    }

    bool fail(CString const & message) {
        error_->setDomain(KestrinConstants::ErrorDomain_Kestrin);
        error_->setErrorCode(ErrorInfo::ERR_UNKNOWN);
        error_->setErrorMessage(message);
        return false;
    }

    bool isAtEnd() const { return position_ >= length_; }

    bool standsAt(char character) const { return !isAtEnd() && text_[position_] == character; }

    bool stepOver(char character) {
        bool const stands = standsAt(character);
        position_ += stands ? 1 : 0;
        return stands;
    }

    /// The word in any case, wherever `length` is.
    bool stepOverWord(char const * word) {
        std::size_t next = position_;
        for (; *word != '\0'; ++word, ++next) {
            if (platform::toLower(text_[next]) != platform::toLower(*word)) {
                return false;
            }
        }
        position_ = next;
        return true;
    }

    template <class Condition>
    void skipWhile(Condition condition) {
        while (!isAtEnd() && condition(text_[position_])) {
            ++position_;
        }
    }

    CString textFrom(std::size_t start) const {
        // No part is longer than `length`, so one that an int cannot count is negative, and refused.
        return {text_ + start, platform::low32(static_cast<long long>(position_ - start))};
    }

    char const * text_;
    std::size_t length_;
    CookieInfo * cookie_;
    ErrorInfo * error_;
    std::size_t position_ = 0;
};

}  // namespace

int InetUtil::parseSetCookie(char const * text, unsigned int length, CookieInfo * cookie,
                             ErrorInfo * error) {
    std::size_t const position = SetCookieReader(text, length, cookie, error).read();
    return platform::low32(static_cast<long long>(position));
}

}  // namespace tvk
