#include "examples/desk/view/Dialog.h"

#include <FL/fl_draw.H>

#include "examples/desk/view/Theme.h"

namespace desk {

Dialog::Dialog(int width, int height, char const * title) : Fl_Window(width, height, title) {
    color(theme::panel());
    set_modal();
}

void Dialog::showOver(Fl_Window const & above) {
    position(above.x() + (above.w() - w()) / 2, above.y() + (above.h() - h()) / 2);
    show();
}

void Dialog::draw() {
    Fl_Window::draw();
    fl_color(theme::text(Tone::FAINT));
    fl_rect(0, 0, w(), h());
}

}  // namespace desk
