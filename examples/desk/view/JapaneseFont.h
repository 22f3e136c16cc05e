#pragma once

#include <string>

namespace desk {

/// The name, for Fl::set_font, of a face that can draw Japanese; empty where none is installed. Well-known
/// ones come first. Opens the display.
std::string japaneseFace();

}  // namespace desk
