#include "examples/desk/view/StatusBar.h"

#include <FL/fl_draw.H>

#include <cstddef>

#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

constexpr int LAMP = 10;
constexpr int LOGIN_WIDTH = 200;
constexpr int NOTICES_WIDTH = 140;
constexpr int TIME_WIDTH = 190;

Fl_Color lampColour(Tone tone) {
    return tone == Tone::PLAIN ? fl_rgb_color(0x5f, 0xc4, 0x7a) : theme::text(tone);
}

}  // namespace

void StatusBar::refresh(long long now) {
    std::array<std::string, 4> const texts = {model_.connectionText(), model_.loginText(),
                                              model_.noticesText(now),
                                              "サーバー時刻 " + model_.serverTimeText()};
    if (texts != texts_) {
        texts_ = texts;
        redraw();
    }
}

void StatusBar::draw() {
    fl_color(theme::heading());
    fl_rectf(x(), y(), w(), h());
    fl_color(lampColour(model_.connectionTone()));
    fl_pie(x() + theme::GAP, y() + (h() - LAMP) / 2, LAMP, LAMP, 0, 360);

    fl_font(theme::FONT, theme::SMALL_SIZE);
    int const left = x() + theme::GAP + LAMP + theme::GAP;
    int const right = x() + w() - theme::GAP;
    int const notices = right - TIME_WIDTH - NOTICES_WIDTH;
    int const login = notices - LOGIN_WIDTH;
    struct Part {
        int left;
        int width;
        Fl_Align align;
    };
    Part const parts[] = {{left, login - left, FL_ALIGN_LEFT},
                          {login, LOGIN_WIDTH, FL_ALIGN_LEFT},
                          {notices, NOTICES_WIDTH, FL_ALIGN_RIGHT},
                          {right - TIME_WIDTH, TIME_WIDTH, FL_ALIGN_RIGHT}};
    fl_color(theme::text(Tone::PLAIN));
    for (std::size_t index = 0; index < texts_.size(); ++index) {
        theme::drawText(texts_[index], parts[index].left, y(), parts[index].width, h(),
                        parts[index].align | FL_ALIGN_INSIDE);
    }
}

}  // namespace desk
