#include "examples/desk/view/Panel.h"

#include <FL/fl_draw.H>

#include <utility>

#include "examples/desk/view/Theme.h"

namespace desk {

Panel::Panel(std::string title) : Fl_Group(0, 0, 0, 0), title_(std::move(title)) {
    box(FL_FLAT_BOX);
    color(theme::panel());
}

void Panel::resize(int x, int y, int w, int h) {
    Fl_Widget::resize(x, y, w, h);
    layout();
}

void Panel::setTitle(std::string title) {
    if (title != title_) {
        title_ = std::move(title);
        redraw();
    }
}

int Panel::top() const { return y() + theme::PANEL_TITLE_HEIGHT; }

int Panel::innerHeight() const { return h() - theme::PANEL_TITLE_HEIGHT; }

void Panel::draw() {
    if ((damage() & ~FL_DAMAGE_CHILD) != 0) {
        draw_box();
        fl_color(theme::text(Tone::PLAIN));
        fl_font(theme::FONT, theme::TITLE_SIZE);
        theme::drawText(title_, x() + theme::GAP, y(), w() - 2 * theme::GAP,
                        theme::PANEL_TITLE_HEIGHT, FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
        for (int index = 0; index < children(); ++index) {
            draw_child(*child(index));
            draw_outside_label(*child(index));
        }
        return;
    }
    draw_children();
}

}  // namespace desk
