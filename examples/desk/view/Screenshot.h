#pragma once

#include <FL/Fl_Window.H>

#include <string>

namespace desk {

/// Draws the window into a PNG file, also where other windows cover it. False where the file cannot be
/// written.
bool writeScreenshot(Fl_Window & window, std::string const & fileName);

}  // namespace desk
