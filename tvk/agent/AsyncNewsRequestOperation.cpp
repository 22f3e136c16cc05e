#include "tvk/agent/AsyncNewsRequestOperation.h"

namespace tvk {

AsyncNewsRequestOperation::~AsyncNewsRequestOperation() = default;

}  // namespace tvk
