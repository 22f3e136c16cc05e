#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "examples/backend/Price.h"

namespace backend {

/// What is traded. The companies are invented.
struct Symbol {
    std::string_view code;
    std::string_view name;  ///< UTF-8
    Price tick;
    Price base;  ///< what its price wanders around
    int unit;    ///< quantities are multiples of it
};

constexpr std::size_t SYMBOL_COUNT = 12;

extern std::array<Symbol, SYMBOL_COUNT> const SYMBOLS;

/// The place of a code in SYMBOLS.
std::optional<std::size_t> findSymbol(std::string_view code);

}  // namespace backend
