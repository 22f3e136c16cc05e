#pragma once

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Secret_Input.H>

#include <functional>
#include <string>

#include "examples/desk/model/LoginModel.h"
#include "examples/desk/view/Dialog.h"

namespace desk {

/// Asks for login and password, above the desk's window. Comes and goes as the model wants it.
class LoginWindow : public Dialog {
public:
    LoginWindow(LoginModel const & model, std::string const & loginId,
                std::string const & password);

    void onLogin(
        std::function<void(std::string const & loginId, std::string const & password)> function) {
        onLogin_ = std::move(function);
    }
    /// The user does not want to log in.
    void onLeave(std::function<void()> function) { onLeave_ = std::move(function); }
    void refresh(Fl_Window const & above);

private:
    static void loggedIn(Fl_Widget * widget, void * window);
    static void left(Fl_Widget * widget, void * window);

    LoginModel const & model_;
    // FLTK owns them.
    Fl_Input * loginId_;
    Fl_Secret_Input * password_;
    Fl_Box * text_;
    Fl_Button * login_;
    std::function<void(std::string const &, std::string const &)> onLogin_;
    std::function<void()> onLeave_;
    unsigned int shownRevision_;
};

}  // namespace desk
