#include "examples/desk/model/OrderStatus.h"

#include <algorithm>
#include <iterator>

namespace desk {

namespace {

struct Status {
    char const * name;
    char const * text;
    bool isOpen;
};

constexpr Status STATUSES[] = {
    {"accepted", "受付済", true},
    {"partly", "一部約定", true},
    {"filled", "約定", false},
    {"canceled", "取消済", false},
};

Status const * statusNamed(std::string const & name) {
    auto const * const found =
        std::find_if(std::begin(STATUSES), std::end(STATUSES),
                     [&](Status const & status) { return status.name == name; });
    return found != std::end(STATUSES) ? found : nullptr;
}

}  // namespace

std::string orderStatusText(std::string const & status) {
    Status const * const known = statusNamed(status);
    return known != nullptr ? known->text : status;
}

bool isOpenStatus(std::string const & status) {
    Status const * const known = statusNamed(status);
    return known != nullptr && known->isOpen;
}

}  // namespace desk
