#include "examples/desk/Text.h"

#include <algorithm>

#include "tvk/platform/CodePage.h"

namespace desk {

namespace {

bool isUnwanted(char character) {
    constexpr unsigned char DELETE = 0x7f;
    auto const byte = static_cast<unsigned char>(character);
    return (byte < ' ' && byte != '\n') || byte == DELETE;
}

}  // namespace

std::string utf8(CString const & text) {
    auto const size = static_cast<unsigned int>(text.GetLength());
    CString const converted = tvk::platform::ansiToUtf8(text.GetString(), size);
    std::string result(converted.GetString(), static_cast<std::size_t>(converted.GetLength()));
    result.erase(std::remove_if(result.begin(), result.end(), isUnwanted), result.end());
    return result;
}

CString ansi(std::string_view text) {
    return tvk::platform::utf8ToAnsi(text.data(), static_cast<unsigned int>(text.size()));
}

}  // namespace desk
