#pragma once

#include <string_view>

namespace backend {

/// What a login comes to. The code "0" is success.
struct LoginAnswer {
    char const * code;
    std::string_view text;  ///< UTF-8, for the user
};

/// Everybody is welcome who has a name, of a sensible length, and knows the password "secret".
LoginAnswer checkLogin(std::string_view loginId, std::string_view password);

}  // namespace backend
