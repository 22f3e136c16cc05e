#include "examples/backend/Users.h"

namespace backend {

namespace {

constexpr std::string_view PASSWORD = "secret";
constexpr std::size_t LONGEST = 64;

}  // namespace

LoginAnswer checkLogin(std::string_view loginId, std::string_view password) {
    if (loginId.empty() || loginId.size() > LONGEST || password != PASSWORD) {
        return {"1", "ログインIDまたはパスワードが違います"};
    }
    return {"0", ""};
}

}  // namespace backend
