#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// At most `limit` bytes of a text in UTF-8, cut between characters and followed by dots if that is
/// not all of it. Control characters, and bytes that are no UTF-8, become \xNN: what came from
/// outside must not steer a terminal.
std::string printable(std::string_view text, std::size_t limit);
