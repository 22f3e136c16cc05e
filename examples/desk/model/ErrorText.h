#pragma once

#include <string>

namespace tvk {
class ErrorInfo;
}

namespace desk {

/// An error in words for the user, in UTF-8. The back end's own words are in Japanese and stay; what is in
/// ASCII comes from a library and is for logs: its code decides then.
std::string errorText(tvk::ErrorInfo const & error);

}  // namespace desk
