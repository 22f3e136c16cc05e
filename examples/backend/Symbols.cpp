#include "examples/backend/Symbols.h"

#include <algorithm>

namespace backend {

std::array<Symbol, SYMBOL_COUNT> const SYMBOLS = {{
    {"1201", "青潮水産", 5, 612 * YEN, 100},
    {"2306", "白樺麦酒", 5, 2'115 * YEN, 100},
    {"3105", "みやび繊維", 1, 845 * YEN, 100},
    {"4207", "千歳野薬品", 10, 4'120 * YEN, 100},
    {"4809", "つむぎソフト", 10, 3'385 * YEN, 100},
    {"5102", "大湊製鋼", 5, 1'730 * YEN, 100},
    {"5903", "かなえ工具", 10, 5'260 * YEN, 10},
    {"6204", "東稜電機", 50, 9'870 * YEN, 100},
    {"6608", "ひばり音響", 50, 13'050 * YEN, 10},
    {"7203", "みのり自動車", 5, 2'540 * YEN, 100},
    {"8105", "暁星銀行", 1, 978 * YEN, 100},
    {"9407", "ほしぞら通信", 1, 166 * YEN, 1'000},
}};

std::optional<std::size_t> findSymbol(std::string_view code) {
    auto const found = std::find_if(SYMBOLS.begin(), SYMBOLS.end(),
                                    [code](Symbol const & symbol) { return symbol.code == code; });
    if (found == SYMBOLS.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - SYMBOLS.begin());
}

}  // namespace backend
