#pragma once

#include <memory>

#include "bench/Work.h"

/// What tvk does inside itself, inlined where it is used. It stands in a library of its own, with the
/// objects of tvk hidden in it, so that the other rows go on calling the tvk that ships.
namespace tvk::bench {

[[gnu::visibility("default")]] std::unique_ptr<Scanner> makeInlinedScanner();

}  // namespace tvk::bench
