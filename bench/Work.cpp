#include "bench/Work.h"

namespace tvk::bench {

namespace {

std::uint64_t scramble(std::uint64_t value) {
    value ^= value >> 31;
    value *= 0x7FB5D329728EA185U;
    value ^= value >> 27;
    value *= 0x81DADEF4BC2DD44DU;
    return value ^ (value >> 33);
}

}  // namespace

std::uint64_t TreeSum::ofText(std::string_view text) {
    std::uint64_t sum = text.size() + 1;
    for (char const c : text) {
        sum = sum * 1099511628211U + static_cast<unsigned char>(c);
    }
    return scramble(sum);
}

std::uint64_t TreeSum::ofNumber(double value) {
    // 0 and -0 differ in their bits alone.
    return scramble(0x4E000000000U +
                    std::bit_cast<std::uint32_t>(static_cast<float>(value) + 0.0F));
}

std::uint64_t TreeSum::ofBoolean(bool value) { return value ? 0x7472756500000001U : 0x66616C7365U; }

std::uint64_t TreeSum::ofMember(std::string_view name, std::uint64_t value) {
    return value == 0 ? 0 : scramble(ofText(name) + 3 * value);
}

std::uint64_t TreeSum::ofElement(std::uint64_t before, std::uint64_t value) {
    return value == 0 ? before : scramble(before * 31 + value);
}

}  // namespace tvk::bench
