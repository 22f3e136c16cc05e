#pragma once

#include <string>
#include <vector>

namespace tvk {
class RecordData;
}

namespace desk {

/// What can be traded. Texts are UTF-8.
struct Symbol {
    std::string code;
    std::string name;
    double tick = 1;     ///< prices are multiples of it
    long long unit = 1;  ///< quantities are multiples of it
};

/// The entries of a "symbols" reply, in its order. One without a code is left out; a tick or unit that
/// is not above 0 becomes 1.
std::vector<Symbol> symbolsIn(tvk::RecordData const & reply);

/// Null where there is none of that code.
Symbol const * symbolOf(std::vector<Symbol> const & symbols, std::string const & code);

}  // namespace desk
