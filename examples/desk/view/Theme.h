#pragma once

#include <FL/Enumerations.H>

#include <string>

#include "examples/desk/model/Tone.h"

/// How the desk looks: colours, fonts and distances, in one place. Dark and calm, so that what moves is
/// what is seen; rising is red and falling is blue, as Japanese screens have them.
namespace desk::theme {

// Lengths in pixels.
constexpr int GAP = 8;
constexpr int ROW_HEIGHT = 22;
constexpr int CONTROL_HEIGHT = 26;
constexpr int PANEL_TITLE_HEIGHT = 30;
constexpr int CELL_PADDING = 6;

constexpr Fl_Font FONT = FL_HELVETICA;
constexpr int TEXT_SIZE = 13;
constexpr int SMALL_SIZE = 12;
constexpr int TITLE_SIZE = 15;

Fl_Color window();     ///< between the panels
Fl_Color panel();      ///< behind tables and charts
Fl_Color stripe();     ///< every other row
Fl_Color heading();    ///< behind the titles of panels and columns
Fl_Color selection();  ///< behind a selected row
Fl_Color line();       ///< grids and borders
Fl_Color field();      ///< behind what is typed
Fl_Color accent();     ///< buttons that act
Fl_Color text(Tone tone);
/// What stands behind a cell that has just changed that way; `strength` is 0 to 1.
Fl_Color flash(Tone way, double strength, Fl_Color background);

/// Gives FLTK these colours, and `face` for all its texts; an empty face leaves its own.
void apply(std::string const & face);

/// The text with line feeds where it has to break in that font; see brokenIntoLines.
std::string fitted(std::string const & text, int width, int fontSize);

/// Draws within the box, cut at its edges.
void drawText(std::string const & text, int x, int y, int w, int h, Fl_Align align);

}  // namespace desk::theme
