// A desk for trading: quotes, orders, a chart and news in one window, over a live session.

#include <FL/Fl.H>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "examples/backend/Backend.h"
#include "examples/desk/Connection.h"
#include "examples/desk/Options.h"
#include "examples/desk/feed/Clock.h"
#include "examples/desk/feed/DeskSession.h"
#include "examples/desk/view/AlertWindow.h"
#include "examples/desk/view/DeskWindow.h"
#include "examples/desk/view/JapaneseFont.h"
#include "examples/desk/view/LoginWindow.h"
#include "examples/desk/view/Screenshot.h"
#include "examples/desk/view/Theme.h"
#include "tvk/agent/KestrinContainer.h"

namespace {

using namespace desk;

enum ExitStatus { ALL_WELL = 0, FAILED = 1, NOT_RUN = 2 };

constexpr double SECONDS_BETWEEN_FRAMES = 1.0 / 30;
/// Of the callbacks of one turn: so the window draws and listens in a burst of notices too.
constexpr std::size_t CALLBACKS_A_TURN = 500;
constexpr long long MILLISEC_TO_STOP = 2'000;
constexpr int MOST_MORE_SECONDS = 20;

/// The parts of the program, and FLTK's loop, which drives them.
class Application {
public:
    explicit Application(Options const & options)
        : options_(options),
          connection_(options, [] { Fl::awake(); }),
          session_(models_),
          window_(models_, actions()),
          loginWindow_(models_.login, options.user, options.password),
          alertWindow_(models_.alerts) {
        models_.status.setPeer(options.host + ":" + std::to_string(options.port));
        loginWindow_.onLogin([this](std::string const & loginId, std::string const & password) {
            session_.logIn(loginId, password);
        });
        loginWindow_.onLeave([this] { leave(); });
    }

    ExitStatus run() {
        std::string problem;
        if (!connection_.isSound(&problem)) {
            std::fprintf(stderr, "desk: %s\n", problem.c_str());
            return NOT_RUN;
        }
        window_.show();
        session_.start();
        if (options_.logsIn) {
            session_.logIn(options_.user, options_.password);
        } else {
            models_.login.want("");
        }
        Fl::add_timeout(0, frame, this);
        if (options_.seconds > 0) {
            Fl::add_timeout(options_.seconds, timeIsUp, this);
        }
        drive([this] { return isLeaving_; });
        ExitStatus const status = takeScreenshot();
        finish();
        return status;
    }

private:
    DeskWindow::Actions actions() {
        return {
            [this](std::string const & code, std::string const & period) {
                session_.showChart(code, period);
            },
            [this](OrderInput const & input) { session_.orders().place(input); },
            [this](std::string const & orderId) { session_.orders().cancel(orderId); },
            [this](std::string const & listId) { session_.news().showList(listId); },
            [this](std::string const & headlineId) { session_.news().read(headlineId); },
            [this] { leave(); },
        };
    }

    void leave() { isLeaving_ = true; }

    /// Turns of the agent and of FLTK, one after the other; the agent's are bounded.
    template <class Condition>
    void drive(Condition const & isOver) {
        while (!isOver()) {
            bool const hasMore = connection_.poll(CALLBACKS_A_TURN);
            Fl::wait(hasMore ? 0 : SECONDS_BETWEEN_FRAMES);
        }
    }

    ExitStatus takeScreenshot() {
        if (options_.screenshotFile.empty()) {
            return ALL_WELL;
        }
        refresh();
        if (!writeScreenshot(window_, options_.screenshotFile)) {
            std::fprintf(stderr, "desk: cannot write %s\n", options_.screenshotFile.c_str());
            return FAILED;
        }
        return ALL_WELL;
    }

    /// The logout is sent, if the network lets it.
    void finish() {
        Fl::remove_timeout(frame, this);
        Fl::remove_timeout(timeIsUp, this);
        session_.stop();
        long long const end = nowMilliSec() + MILLISEC_TO_STOP;
        drive([&] { return session_.isStopped() || nowMilliSec() > end; });
    }

    void refresh() {
        session_.refreshStatus();
        window_.refresh(nowMilliSec());
        loginWindow_.refresh(window_);
        alertWindow_.refresh(window_);
    }

    static void frame(void * application) {
        static_cast<Application *>(application)->refresh();
        Fl::repeat_timeout(SECONDS_BETWEEN_FRAMES, frame, application);
    }

    /// A picture is of a desk that is alive; a slow machine gets more time for that.
    bool isPictureReady() const {
        bool const wantsOne = !options_.screenshotFile.empty() && options_.logsIn;
        return !wantsOne || (!models_.chart.candles().empty() && models_.news.rowCount() > 0);
    }

    static void timeIsUp(void * application) {
        auto & self = *static_cast<Application *>(application);
        if (!self.isPictureReady() && self.moreSeconds_ < MOST_MORE_SECONDS) {
            ++self.moreSeconds_;
            Fl::repeat_timeout(1, timeIsUp, application);
            return;
        }
        self.leave();
    }

    Options const options_;
    // The connection goes last: the session and the windows use what it holds.
    Connection connection_;
    Models models_;
    DeskSession session_;
    DeskWindow window_;
    LoginWindow loginWindow_;
    AlertWindow alertWindow_;
    bool isLeaving_ = false;
    int moreSeconds_ = 0;
};

/// Points the options to a back end in this process, unless they name one.
std::unique_ptr<backend::Backend> ownBackEnd(Options * options, std::string * problem) {
    if (!options->host.empty()) {
        return nullptr;
    }
    auto backEnd = std::make_unique<backend::Backend>(backend::Backend::Options());
    if (backEnd->start(problem)) {
        options->host = "127.0.0.1";
        options->port = backEnd->port();
        options->isPlain = true;
    }
    return backEnd;
}

void chooseFont() {
    std::string const face = japaneseFace();
    if (face.empty()) {
        std::fputs("desk: no installed font has Japanese; texts will show as boxes\n", stderr);
    }
    theme::apply(face);
}

ExitStatus runDesk(Options options) {
    std::string problem;
    auto const backEnd = ownBackEnd(&options, &problem);
    if (!problem.empty()) {
        std::fprintf(stderr, "desk: no back end: %s\n", problem.c_str());
        return NOT_RUN;
    }
    Fl::lock();  // lets another thread wake the loop
    chooseFont();
    return Application(options).run();
}

}  // namespace

int main(int argc, char ** argv) {
    Options options;
    std::string problem;
    if (!readOptions(std::vector<std::string>(argv + 1, argv + argc), &options, &problem)) {
        std::fprintf(stderr, "desk: %s\ndesk --help lists the options\n", problem.c_str());
        return NOT_RUN;
    }
    if (options.wantsHelp) {
        std::fputs(USAGE, stdout);
        return ALL_WELL;
    }
    ExitStatus const status = runDesk(options);
    tvk::KestrinContainer::cleanup();
    return status;
}
