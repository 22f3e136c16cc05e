#include "examples/desk/view/LoginWindow.h"

#include <FL/Fl_Return_Button.H>

#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

constexpr int WIDTH = 360;
constexpr int HEIGHT = 214;
constexpr int MARGIN = 24;
constexpr int LABEL_WIDTH = 92;
constexpr int FIELD_HEIGHT = 28;
constexpr int BUTTON_WIDTH = 108;

}  // namespace

LoginWindow::LoginWindow(LoginModel const & model, std::string const & loginId,
                         std::string const & password)
    : Dialog(WIDTH, HEIGHT, "ログイン"), model_(model), shownRevision_(model.revision() - 1) {
    int const left = MARGIN + LABEL_WIDTH;
    int const fieldWidth = WIDTH - left - MARGIN;
    auto * const title = new Fl_Box(MARGIN, 12, WIDTH - 2 * MARGIN, 32, "ログイン");
    title->labelsize(theme::TITLE_SIZE + 2);
    title->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
    loginId_ = new Fl_Input(left, 54, fieldWidth, FIELD_HEIGHT, "利用者ID ");
    loginId_->value(loginId.c_str());
    password_ = new Fl_Secret_Input(left, 92, fieldWidth, FIELD_HEIGHT, "パスワード ");
    password_->value(password.c_str());
    text_ = new Fl_Box(MARGIN, 126, WIDTH - 2 * MARGIN, 34);
    text_->labelsize(theme::SMALL_SIZE);
    text_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
    int const buttonTop = HEIGHT - FIELD_HEIGHT - 20;
    auto * const leave = new Fl_Button(WIDTH - MARGIN - 2 * BUTTON_WIDTH - theme::GAP, buttonTop,
                                       BUTTON_WIDTH, FIELD_HEIGHT, "終了");
    leave->callback(LoginWindow::left, this);
    login_ = new Fl_Return_Button(WIDTH - MARGIN - BUTTON_WIDTH, buttonTop, BUTTON_WIDTH,
                                  FIELD_HEIGHT, "ログイン");
    login_->color(theme::accent());
    login_->callback(loggedIn, this);
    end();
    callback(LoginWindow::left, this);
}

void LoginWindow::refresh(Fl_Window const & above) {
    if (model_.revision() == shownRevision_) {
        return;
    }
    shownRevision_ = model_.revision();
    bool const isUnderWay = model_.isUnderWay();
    std::string const text = isUnderWay ? "ログインしています…" : model_.text();
    text_->copy_label(theme::fitted(text, text_->w(), theme::SMALL_SIZE).c_str());
    text_->labelcolor(theme::text(isUnderWay ? Tone::FAINT : Tone::WARNING));
    if (isUnderWay) {
        login_->deactivate();
    } else {
        login_->activate();
    }
    redraw();
    if (model_.isWanted() && !shown()) {
        showOver(above);
        loginId_->take_focus();
    } else if (!model_.isWanted() && shown()) {
        hide();
    }
}

void LoginWindow::loggedIn(Fl_Widget * /*widget*/, void * window) {
    auto const & self = *static_cast<LoginWindow *>(window);
    if (self.onLogin_) {
        self.onLogin_(self.loginId_->value(), self.password_->value());
    }
}

void LoginWindow::left(Fl_Widget * /*widget*/, void * window) {
    auto const & self = *static_cast<LoginWindow *>(window);
    if (self.onLeave_) {
        self.onLeave_();
    }
}

}  // namespace desk
