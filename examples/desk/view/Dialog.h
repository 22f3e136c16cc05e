#pragma once

#include <FL/Fl_Window.H>

namespace desk {

/// A window above the desk's, with an edge of its own for where no window manager draws one.
class Dialog : public Fl_Window {
protected:
    Dialog(int width, int height, char const * title);

    /// Shows it over the middle of another window.
    void showOver(Fl_Window const & above);
    void draw() override;
};

}  // namespace desk
