#include "examples/desk/feed/Report.h"

#include "examples/desk/Text.h"
#include "examples/desk/feed/Container.h"
#include "tvk/errors/KestrinConstants.h"

namespace desk {

tvk::ErrorInfo timeoutError() {
    return {COMPONENT_CODE, tvk::KestrinConstants::ErrorDomain_Kestrin,
            tvk::KestrinConstants::ERR_RequestTimeOut, ansi("時間内に応答がありませんでした。"),
            nullptr};
}

void report(AlertModel & alerts, tvk::ErrorInfo const & error) {
    errorManager().showError(&alerts, error, nullptr);
}

}  // namespace desk
