// The road of one request and of one notice through an agent, from its configuration to the end, with
// a back end that is a table in the same process. Nothing waits and nothing is random: the output is
// the same on every run.

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>

#include "examples/inprocess_agent/Account.h"
#include "examples/inprocess_agent/AnswerTable.h"
#include "examples/inprocess_agent/InProcessKestrin.h"
#include "examples/support/Messages.h"
#include "examples/support/Printable.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/agent/KestrinConfig.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/agent/KestrinUtil.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/errors/KestrinErrorManagerImpl.h"
#include "tvk/values/NumberData.h"

namespace {

using inprocess::Account;
using inprocess::InProcessKestrin;
using inprocess::NoticeView;
using tvk::ErrorInfo;
using tvk::Kestrin;
using tvk::KestrinConstants;
using tvk::KestrinContainer;
using tvk::KestrinMessage;
using tvk::RefCountedPtr;

enum ExitStatus { ALL_WELL = 0, FAILED = 1, NOT_RUN = 2 };

constexpr char USAGE[] =
    "Usage: inprocess_agent\n"
    "\n"
    "Walks an agent through a session with a back end in the same process: configuration and\n"
    "container, connection and login, subscriptions and notices, requests that are answered, time\n"
    "out, are cancelled and fail, logout and clean-up. Each line stands behind the time of the\n"
    "agent's clock in milliseconds; > and < are what travels.\n"
    "\n"
    "  --help  prints this\n";

/// The parts of an application that the agent calls. They end before the agent does, and are taken
/// out of it before that.
struct Application {
    explicit Application(InProcessKestrin const & agent)
        : account(std::cout, [&agent] { return agent.now(); }) {}

    Account account;
    NoticeView book{account, "book"};      // wants every quote
    NoticeView screen{account, "screen"};  // wants one
};

void heading(char const * text) { std::cout << '\n' << text << "\n\n"; }

/// As every module of an application finds the agent.
Kestrin & agentOfContainer() { return *KestrinContainer::instance()->getKestrin(); }

void reportUnless(bool succeeded, Account & account, ErrorInfo const & error) {
    if (!succeeded) {
        account.report(error);
    }
}

RefCountedPtr<InProcessKestrin> setUp() {
    KestrinContainer & container = *KestrinContainer::instance();
    container.setErrorManager(new tvk::KestrinErrorManagerImpl);

    RefCountedPtr<InProcessKestrin> const agent(new InProcessKestrin(inprocess::tradingAnswers()));
    agent->setErrorManager(container.getErrorManager());
    container.setKestrin(agent.get());
    return agent;
}

RefCountedPtr<tvk::KestrinConfig> configuration() {
    RefCountedPtr<tvk::KestrinConfig> config(new tvk::KestrinConfig);
    config->setVersionNum("1.0");
    config->setDescription("a walk through a session");
    config->setLoginId("hanako");
    config->setPassword("secret");
    config->setProperty("timeoutMilliSec", "500");
    return config;
}

void printFrame(Account & account, InProcessKestrin::Direction direction, std::string frame) {
    std::replace(frame.begin(), frame.end(), '\n', ' ');
    account.say((direction == InProcessKestrin::Direction::OUT ? "> " : "< ") +
                printable(frame, 200));
}

void connect(InProcessKestrin & agent, Account & account) {
    heading("Connect and log in");
    ErrorInfo error;
    agent.addKestrinListener(&account);
    agent.initialize(configuration(), &error);
    reportUnless(!error.hasError(), account, error);
    reportUnless(agent.start(&error), account, error);
    agent.advance(10);

    auto const config = agent.getConfig();
    reportUnless(agent.login(config->getLoginId(), config->getPassword(), &error), account, error);
    agent.advance(20);
    reportUnless(agent.startRealTimeService(&error), account, error);
    account.say("the back end's time is " + std::to_string(agent.getServerTimeMilliSec()));
}

void receiveNotices(InProcessKestrin & agent, Application & application) {
    heading("Two subscriptions, three notices");
    agent.addMessageHandler("quote", "3622", &application.screen);
    agent.addMessageHandler("quote", KestrinConstants::WILDCARD, &application.book);

    application.account.say("screen subscribes to 3622");
    agent.subscribe("quote", "3622");
    application.account.say("book subscribes to 3622, which is open already");
    agent.subscribe("quote", "3622");
    application.account.say("book subscribes to IDXF.1409");
    agent.subscribe("quote", "IDXF.1409");
    agent.advance(50);

    application.account.say("all unsubscribe");
    agent.unsubscribe("quote", "IDXF.1409");
    agent.unsubscribe("quote", "3622");
    agent.unsubscribe("quote", "3622");
    agent.advance(50);
}

void requestWithReply(InProcessKestrin & agent, Account & account) {
    heading("A request with a reply");
    RefCountedPtr<KestrinMessage> const order = requestOfType("order");
    order->setFieldValue("sym", "3622");
    order->setFieldValue("side", "buy");
    order->setFieldValue("qty", new tvk::NumberData(100));
    agentOfContainer().asyncRequest(order, &account, nullptr);
    agent.advance(50);
}

void requestThatWaits(Account & account) {
    heading("A request that waits for its reply");
    ErrorInfo error;
    auto const reply = agentOfContainer().request(requestOfType("balance"), &error);
    reportUnless(!reply.isNull(), account, error);
    if (reply) {
        auto const cash = tvk::KestrinUtil::getFieldValueWithPath(*reply, "cash");
        account.say("cash is " + printableAnsi(cash->asString(), 20));
    }
}

void requestThatTimesOut(InProcessKestrin & agent, Account & account) {
    heading("A request that times out");
    agentOfContainer().asyncRequest(requestOfType("history"), 200, &account, nullptr);
    agent.advance(300);
}

void requestThatIsCancelled(InProcessKestrin & agent, Account & account) {
    heading("A request that is cancelled, and its reply, which comes too late");
    auto const operation =
        agentOfContainer().asyncRequest(requestOfType("ranking"), &account, nullptr);
    agent.advance(30);
    operation->cancel();
    agent.advance(100);
}

void requestsThatFail(InProcessKestrin & agent, Account & account) {
    heading("A request that fails three times and is shown twice");
    agentOfContainer().asyncRequest(requestOfType("margin"), &account, nullptr);
    agent.advance(20);
    agentOfContainer().asyncRequest(requestOfType("margin"), &account, nullptr);
    agent.advance(20);
    account.dismissAlert();
    agentOfContainer().asyncRequest(requestOfType("margin"), &account, nullptr);
    agent.advance(20);
}

void leave(InProcessKestrin & agent, Application & application) {
    heading("Log out with a request under way, and stop");
    agentOfContainer().asyncRequest(requestOfType("ranking"), &application.account, nullptr);
    agent.advance(10);
    agentOfContainer().logout();
    agent.stop();

    agent.removeMessageHandlers("quote", "3622");
    agent.removeMessageHandlers("quote", KestrinConstants::WILDCARD);
    agent.removeKestrinListener(&application.account);
    agent.setTap(nullptr);
}

void session(InProcessKestrin & agent) {
    Application application(agent);
    connect(agent, application.account);
    // Not sooner: a password belongs in no log.
    agent.setTap([&](InProcessKestrin::Direction direction, std::string const & frame) {
        printFrame(application.account, direction, frame);
    });
    receiveNotices(agent, application);
    requestWithReply(agent, application.account);
    requestThatWaits(application.account);
    requestThatTimesOut(agent, application.account);
    requestThatIsCancelled(agent, application.account);
    requestsThatFail(agent, application.account);
    leave(agent, application);
}

void walk() {
    std::cout << "A session with a back end in the same process\n";
    RefCountedPtr<InProcessKestrin> const agent = setUp();
    session(*agent);

    heading("Clean up");
    std::cout << "references to the agent: " << agent->getRefCount() << '\n';
    KestrinContainer::cleanup();
    std::cout << "without the container: " << agent->getRefCount() << '\n';
}

}  // namespace

int main(int argc, char ** argv) {
    if (argc == 1) {
        walk();
        return std::cout.flush() ? ALL_WELL : FAILED;
    }
    std::string_view const word = argv[1];
    if (argc == 2 && (word == "--help" || word == "-h")) {
        std::fputs(USAGE, stdout);
        return ALL_WELL;
    }
    std::fprintf(stderr, "inprocess_agent: takes no %s\ninprocess_agent --help says more\n",
                 argv[1]);
    return NOT_RUN;
}
