#include "tvk/inet/InetClientInfo.h"

namespace tvk {

InetClientInfo::InetClientInfo() = default;
InetClientInfo::InetClientInfo(InetClientInfo const & other) = default;
InetClientInfo::~InetClientInfo() = default;

InetClientInfo & InetClientInfo::operator=(InetClientInfo const & other) = default;

}  // namespace tvk
