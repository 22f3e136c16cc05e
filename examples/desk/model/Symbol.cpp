#include "examples/desk/model/Symbol.h"

#include <algorithm>

#include "examples/desk/Text.h"
#include "examples/support/Fields.h"

namespace desk {

namespace {

Symbol symbolIn(tvk::RecordData const & entry) {
    Symbol symbol;
    symbol.code = utf8(textIn(entry, "code"));
    symbol.name = utf8(textIn(entry, "name"));
    if (double const tick = doubleIn(entry, "tick"); tick > 0) {
        symbol.tick = tick;
    }
    symbol.unit = std::max(1LL, numberIn(entry, "unit"));
    return symbol;
}

}  // namespace

std::vector<Symbol> symbolsIn(tvk::RecordData const & reply) {
    std::vector<Symbol> symbols;
    tvk::ListData const * const list = listIn(reply, "symbols");
    for (unsigned int index = 0; list != nullptr && index < list->getCount(); ++index) {
        auto const entry = list->getElement(index);
        if (entry && entry->getFieldType() == FLDTYPE_RECORD) {
            symbols.push_back(symbolIn(entry->asRecord()));
        }
    }
    symbols.erase(std::remove_if(symbols.begin(), symbols.end(),
                                 [](Symbol const & symbol) { return symbol.code.empty(); }),
                  symbols.end());
    return symbols;
}

Symbol const * symbolOf(std::vector<Symbol> const & symbols, std::string const & code) {
    auto const found = std::find_if(symbols.begin(), symbols.end(),
                                    [&](Symbol const & symbol) { return symbol.code == code; });
    return found != symbols.end() ? &*found : nullptr;
}

}  // namespace desk
