#include "tvk/agent/AsyncRequestOperation.h"

namespace tvk {

AsyncRequestOperation::~AsyncRequestOperation() = default;

}  // namespace tvk
