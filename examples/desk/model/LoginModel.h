#pragma once

#include <string>
#include <utility>

namespace desk {

/// The login window: whether it is wanted, and what it says.
class LoginModel {
public:
    bool isWanted() const { return isWanted_; }
    bool isUnderWay() const { return isUnderWay_; }
    /// Why the last login failed; UTF-8, empty where there is nothing to say.
    std::string const & text() const { return text_; }

    void want(std::string text) { set(true, false, std::move(text)); }
    void begin() { set(isWanted_, true, {}); }
    void succeed() { set(false, false, {}); }

    /// Another number after each change.
    unsigned int revision() const { return revision_; }

private:
    void set(bool isWanted, bool isUnderWay, std::string text) {
        isWanted_ = isWanted;
        isUnderWay_ = isUnderWay;
        text_ = std::move(text);
        ++revision_;
    }

    bool isWanted_ = false;
    bool isUnderWay_ = false;
    std::string text_;
    unsigned int revision_ = 0;
};

}  // namespace desk
