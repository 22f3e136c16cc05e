#pragma once

#include <string>
#include <vector>

#include "examples/support/Printable.h"
#include "tvk/platform/CString.h"

/// What is wrong with a file of definitions, in UTF-8 and fit for a terminal: one line each, the
/// place in the file's structure first.
class Complaints {
public:
    /// `place` is a path such as `types[3].fields[1].type`, empty for the file as a whole.
    void add(std::string const & place, std::string const & text) {
        lines_.push_back(place.empty() ? text : place + ": " + text);
    }

    bool isEmpty() const { return lines_.empty(); }
    std::vector<std::string> const & lines() const { return lines_; }

private:
    std::vector<std::string> lines_;
};

/// A text of the file within a complaint: its first 60 bytes, if it is longer.
inline std::string quoted(CString const & text) { return '"' + printableAnsi(text, 60) + '"'; }
