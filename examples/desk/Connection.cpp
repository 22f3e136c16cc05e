#include "examples/desk/Connection.h"

#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/feed/Container.h"
#include "modules/asio/DesktopLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "modules/services/RemoteChartService.h"
#include "modules/services/RemoteNewsService.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinErrorManagerImpl.h"

namespace desk {

namespace {

tvk::TcpOptions tcpOptionsOf(Options const & options) {
    tvk::TcpOptions result;
    result.host = ansi(options.host);
    result.port = options.port;
    result.plain = options.isPlain;
    result.inet.setCertFile(ansi(options.certFile));
    result.inet.setUserAgent("desk");
    return result;
}

tvk::RefCountedPtr<tvk::KestrinConfig> configOf(Options const & options) {
    tvk::RefCountedPtr<tvk::KestrinConfig> config(new tvk::KestrinConfig);
    config->setVersionNum("1.0");
    config->setDescription("desk");
    config->setLoginId(ansi(options.user));
    return config;
}

}  // namespace

Connection::Connection(Options const & options, std::function<void()> wake)
    : agent_(new tvk::TcpKestrin(std::make_shared<tvk::DesktopLoop>(std::move(wake)),
                                 tcpOptionsOf(options))) {
    tvk::KestrinContainer & container = *tvk::KestrinContainer::instance();
    auto * const errors = new tvk::KestrinErrorManagerImpl;
    // Only a manager that logs remembers that the network is down, and holds back what fails for it.
    errors->setVerbose(1);
    container.setErrorManager(errors);
    agent_->setErrorManager(container.getErrorManager());
    container.setKestrin(agent_.get());
    container.setChartService(new tvk::RemoteChartService(agent_));
    container.setXmlNewsService(new tvk::RemoteNewsService(agent_));
    tvk::ErrorInfo error;
    agent_->initialize(configOf(options), &error);
    problem_ = utf8(error.getErrorMessage());
}

Connection::~Connection() {
    tvk::KestrinContainer & container = *tvk::KestrinContainer::instance();
    container.setXmlNewsService(nullptr);
    container.setChartService(nullptr);
    container.setKestrin(nullptr);
    container.setErrorManager(nullptr);
}

bool Connection::isSound(std::string * problem) const {
    *problem = problem_;
    return problem_.empty();
}

bool Connection::poll(std::size_t maximum) { return agent_->poll(maximum) == maximum; }

}  // namespace desk
