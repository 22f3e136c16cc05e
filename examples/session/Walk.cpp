#include "examples/session/Walk.h"

#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "modules/asio/AsioThreadPool.h"
#include "modules/asio/TcpKestrin.h"
#include "modules/services/RemoteChartService.h"
#include "modules/services/RemoteNewsService.h"
#include "tvk/agent/KestrinConfig.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinErrorManagerImpl.h"

namespace session {

namespace {

using tvk::KestrinContainer;
using tvk::RefCountedPtr;
using tvk::TcpKestrin;

RefCountedPtr<tvk::KestrinConfig> configuration(Options const & options) {
    RefCountedPtr<tvk::KestrinConfig> config(new tvk::KestrinConfig);
    config->setVersionNum("1.0");
    config->setDescription("a walk through a session");
    config->setLoginId(ansi(options.user));
    return config;
}

/// Where all modules of an application find the agent and each other. Cleaned up at its end at the
/// latest: what it holds must not outlive the loop.
class Container {
public:
    explicit Container(RefCountedPtr<TcpKestrin> const & agent) {
        KestrinContainer & container = *KestrinContainer::instance();
        container.setErrorManager(new tvk::KestrinErrorManagerImpl);
        agent->setErrorManager(container.getErrorManager());
        container.setKestrin(agent.get());
        container.setThreadPool(&pool_);
        container.setChartService(new tvk::RemoteChartService(agent));
        container.setXmlNewsService(new tvk::RemoteNewsService(agent));
    }
    Container(Container const &) = delete;
    Container & operator=(Container const &) = delete;
    ~Container() { cleanUp(); }

    void cleanUp() { KestrinContainer::cleanup(); }

private:
    tvk::AsioThreadPool pool_{1};  // borrowed by the container, and so outlives it
};

/// What lies between the agent's start and its end.
void play(Stage & stage) {
    bool const isReady = connect(stage) && logIn(stage) && listSymbols(stage);
    if (isReady) {
        watchQuotes(stage);
        takeStream(stage);
        askAndAnswer(stage);
        showErrorOnce(stage);
        trade(stage);
        breakConnection(stage);
        drawChart(stage);
        readNews(stage);
    }
    leave(stage);
}

}  // namespace

void walk(Options const & options, tvk::TcpOptions const & tcp, Account & account) {
    Desktop desktop;
    RefCountedPtr<TcpKestrin> const agent(new TcpKestrin(desktop.loop(), tcp));
    Container container(agent);
    tvk::ErrorInfo error;
    agent->initialize(configuration(options), &error);

    Listener listener(account);
    Alerts alerts(account);
    agent->addKestrinListener(&listener);
    Stage stage{options, account, desktop, *agent, listener, alerts, ansi(options.symbol)};
    play(stage);
    agent->removeKestrinListener(&listener);

    account.section("Clean up");
    container.cleanUp();
    account.expect(KestrinContainer::instance() == nullptr && agent->getRefCount() == 1,
                   "nobody holds the agent any more but its maker");
}

}  // namespace session
