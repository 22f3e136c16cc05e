#pragma once

#include <cstddef>
#include <cstdint>

/// The tables of the code pages, written by generate_code_page_data.py. In all of them 0 stands for
/// "none": NUL is ASCII, and ASCII never reaches a table.
namespace tvk::platform::data {

/// The characters of the bytes 80 to FF of a code page. In 932 a lead byte has none.
extern char16_t const SINGLES_932[128];
extern char16_t const SINGLES_1252[128];

/// Reading 932: the row of the lead byte minus 80 starts at the number given, and in it stands the
/// character at the trail byte minus FIRST_TRAIL_932. The first row is empty; it is that of every
/// byte that begins no character of two bytes.
constexpr std::size_t FIRST_TRAIL_932 = 0x40;
constexpr std::size_t TRAILS_932 = 0xFC - FIRST_TRAIL_932 + 1;
extern std::uint16_t const ROW_OF_LEAD_932[128];
extern char16_t const ROWS_932[];

/// Writing 932: the page that is found by all bits that the bytes of the UTF-8 form carry, but for
/// the last byte, starts at the number given; the last six bits are the place in the page. The
/// first page is empty; overlong forms and surrogates lead there. A code above FF is a lead byte
/// and a trail byte.
extern std::uint16_t const PAGE_OF_TWO_BYTES_932[32];
extern std::uint16_t const PAGE_OF_THREE_BYTES_932[1024];
extern std::uint16_t const PAGES_932[];

/// A character and the mark behind it that are written as one code. Sorted by mark, then base.
struct Composition {
    char16_t mark;
    char16_t base;
    std::uint16_t code;
};
constexpr std::size_t COMPOSITIONS_932_COUNT = 58;
constexpr std::size_t COMPOSITIONS_1252_COUNT = 58;
extern Composition const COMPOSITIONS_932[COMPOSITIONS_932_COUNT];
extern Composition const COMPOSITIONS_1252[COMPOSITIONS_1252_COUNT];

}  // namespace tvk::platform::data
