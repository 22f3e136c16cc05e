#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "examples/desk/Options.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
class TcpKestrin;
}

namespace desk {

/// Fills the container: an agent over TCP on a loop that wakes the window's, the services on it, and the
/// error manager. Empties it when it ends, behind all that uses it.
class Connection {
public:
    /// `wake` is called on another thread when there is something to poll.
    Connection(Options const & options, std::function<void()> wake);
    ~Connection();
    Connection(Connection const &) = delete;
    Connection & operator=(Connection const &) = delete;

    /// False, with a reason, where the agent cannot be had with these options.
    bool isSound(std::string * problem) const;
    /// Brings at most `maximum` callbacks; true where more may wait.
    bool poll(std::size_t maximum);

private:
    tvk::RefCountedPtr<tvk::TcpKestrin> agent_;
    std::string problem_;
};

}  // namespace desk
