#include "examples/desk/view/JapaneseFont.h"

#include <FL/Fl.H>
#include <FL/Fl_Image_Surface.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

namespace desk {

namespace {

constexpr char const * WELL_KNOWN[] = {
    "Noto Sans CJK JP", "Noto Sans JP", "BIZ UDPGothic", "IPAexGothic",  "IPAPGothic",
    "IPA Pゴシック",    "VL PGothic",   "TakaoPGothic",  "Yu Gothic UI", "Meiryo",
    "IPAGothic",        "IPAゴシック",  "VL Gothic",     "MS Gothic",
};

/// The place among the well-known ones; behind all of them for any other.
std::ptrdiff_t rankOf(std::string const & face) {
    // The first character of FLTK's names tells the style; a blank is regular.
    auto const * const found =
        std::find_if(std::begin(WELL_KNOWN), std::end(WELL_KNOWN),
                     [&](char const * name) { return face == std::string(" ") + name; });
    return found - std::begin(WELL_KNOWN);
}

std::vector<std::string> regularFaces() {
    std::vector<std::string> faces;
    int const count = Fl::set_fonts("-*");
    for (int font = 0; font < count; ++font) {
        char const * const name = Fl::get_font(static_cast<Fl_Font>(font));
        if (name != nullptr && name[0] == ' ') {
            faces.emplace_back(name);
        }
    }
    std::stable_sort(faces.begin(), faces.end(), [](std::string const & a, std::string const & b) {
        return rankOf(a) < rankOf(b);
    });
    return faces;
}

constexpr int GLYPH_SIZE = 24;
constexpr int SURFACE_SIZE = 2 * GLYPH_SIZE;

std::vector<unsigned char> pictureOf(char const * character) {
    Fl_Image_Surface surface(SURFACE_SIZE, SURFACE_SIZE);
    surface.set_current();
    fl_color(FL_WHITE);
    fl_rectf(0, 0, SURFACE_SIZE, SURFACE_SIZE);
    fl_color(FL_BLACK);
    fl_font(FL_FREE_FONT, GLYPH_SIZE);
    fl_draw(character, GLYPH_SIZE / 2, SURFACE_SIZE - GLYPH_SIZE / 2);
    std::unique_ptr<Fl_RGB_Image> const image(surface.image());
    Fl_Display_Device::display_device()->set_current();
    auto const * const bytes = reinterpret_cast<unsigned char const *>(image->data()[0]);
    return {bytes, bytes + static_cast<std::ptrdiff_t>(image->w()) * image->h() * image->d()};
}

/// A face draws all that it lacks as the same box, or as nothing.
bool drawsJapanese(std::string const & face) {
    Fl::set_font(FL_FREE_FONT, face.c_str());
    auto const kanji = pictureOf("\xe8\xa9\xb1");     // U+8A71
    auto const other = pictureOf("\xe9\x8a\x98");     // U+9298
    auto const hiragana = pictureOf("\xe3\x81\xae");  // U+306E
    return kanji != other && kanji != hiragana && other != hiragana;
}

}  // namespace

std::string japaneseFace() {
    for (std::string const & face : regularFaces()) {
        if (drawsJapanese(face)) {
            return face;
        }
    }
    return {};
}

}  // namespace desk
