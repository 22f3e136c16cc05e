#pragma once

#include "examples/session/Account.h"
#include "examples/session/Options.h"
#include "modules/asio/TcpOptions.h"

namespace session {

/// Walks a session with the back end that `tcp` leads to, from an empty container to an empty one. What
/// was expected and whether it held stands in the account.
void walk(Options const & options, tvk::TcpOptions const & tcp, Account & account);

}  // namespace session
