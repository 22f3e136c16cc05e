#include "examples/desk/view/Theme.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <string_view>

#include "examples/desk/model/LineBreaks.h"

namespace desk::theme {

Fl_Color window() { return fl_rgb_color(0x11, 0x15, 0x1b); }
Fl_Color panel() { return fl_rgb_color(0x19, 0x1f, 0x28); }
Fl_Color stripe() { return fl_rgb_color(0x1d, 0x24, 0x2e); }
Fl_Color heading() { return fl_rgb_color(0x23, 0x2b, 0x37); }
Fl_Color selection() { return fl_rgb_color(0x2c, 0x40, 0x58); }
Fl_Color line() { return fl_rgb_color(0x2f, 0x39, 0x47); }
Fl_Color field() { return fl_rgb_color(0x0f, 0x13, 0x19); }
Fl_Color accent() { return fl_rgb_color(0x2f, 0x6f, 0xb3); }

Fl_Color text(Tone tone) {
    switch (tone) {
        case Tone::FAINT:
            return fl_rgb_color(0x8b, 0x97, 0xa7);
        case Tone::UP:
            return fl_rgb_color(0xf2, 0x6d, 0x6d);
        case Tone::DOWN:
            return fl_rgb_color(0x5a, 0xb0, 0xf2);
        case Tone::WARNING:
            return fl_rgb_color(0xf0, 0xb4, 0x52);
        default:
            return fl_rgb_color(0xdd, 0xe3, 0xea);
    }
}

Fl_Color flash(Tone way, double strength, Fl_Color background) {
    constexpr double STRONGEST = 0.4;
    return fl_color_average(text(way), background, static_cast<float>(strength * STRONGEST));
}

namespace {

void setColour(Fl_Color index, Fl_Color colour) {
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
    Fl::get_color(colour, red, green, blue);
    Fl::set_color(index, red, green, blue);
}

void setFace(std::string const & face) {
    // FLTK keeps the pointer.
    static std::string const kept = face;
    for (Fl_Font const font : {FL_HELVETICA, FL_HELVETICA_BOLD, FL_COURIER}) {
        Fl::set_font(font, kept.c_str());
    }
}

}  // namespace

void apply(std::string const & face) {
    if (!face.empty()) {
        setFace(face);
    }
    Fl::scheme("gtk+");
    Fl::background(0x33, 0x3d, 0x4b);
    Fl::background2(0x0f, 0x13, 0x19);
    Fl::foreground(0xdd, 0xe3, 0xea);
    setColour(FL_SELECTION_COLOR, accent());
    setColour(FL_INACTIVE_COLOR, text(Tone::FAINT));
    FL_NORMAL_SIZE = TEXT_SIZE;
    Fl::scrollbar_size(12);
}

std::string fitted(std::string const & text, int width, int fontSize) {
    fl_font(FONT, fontSize);
    return brokenIntoLines(text, width, [](std::string_view part) {
        return fl_width(part.data(), static_cast<int>(part.size()));
    });
}

void drawText(std::string const & text, int x, int y, int w, int h, Fl_Align align) {
    fl_push_clip(x, y, w, h);
    // Symbols begin with @ in FLTK: here they are text.
    fl_draw(text.c_str(), x, y, w, h, align, nullptr, 0);
    fl_pop_clip();
}

}  // namespace desk::theme
