#pragma once

#include <stdexcept>

#include "tvk/platform/CodePage.h"

namespace tvk::test {

/// The process's code page, for as long as the object lives.
class UsingCodePage {
public:
    explicit UsingCodePage(unsigned int codePage) : before_(platform::ansiCodePage()) {
        if (!platform::setAnsiCodePage(codePage)) {
            throw std::invalid_argument("the code page is not known");
        }
    }
    ~UsingCodePage() { platform::setAnsiCodePage(before_); }
    UsingCodePage(UsingCodePage const &) = delete;
    UsingCodePage & operator=(UsingCodePage const &) = delete;

private:
    unsigned int before_;
};

}  // namespace tvk::test
