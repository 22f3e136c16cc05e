#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace desk {

/// Breaks a text into lines that are not wider than `width`, as Japanese is set: between any two
/// characters but inside a word or a number in ASCII, with no closing mark at the start of a line and no
/// opening one at its end. A line feed breaks too; a blank where a line breaks is left out. A piece that
/// is too wide by itself has a line to itself.
///
/// `widthOf` measures a text. UTF-8; bytes that are none count as characters of their own.
std::string brokenIntoLines(std::string_view text, double width,
                            std::function<double(std::string_view)> const & widthOf);

}  // namespace desk
