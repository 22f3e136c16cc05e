#pragma once

#include <chrono>
#include <cstdio>
#include <span>

#include "bench/Rows.h"

namespace tvk::bench {

struct Effort {
    int rounds = 21;
    std::chrono::nanoseconds slice = std::chrono::milliseconds(10);
};

/// Runs rows and writes an object of JSON a line: `{"row": NAME, "begins": true}` whenever the program
/// turns to a row, so that a reader knows which one ended it, and at last what was measured, or why
/// not. The rows of a group are set up and compared first, and then take turns: a slice of time
/// each, round after round, each round in another order. A time is that of the thread on a
/// processor, a document.
void runRows(std::span<Row const> rows, Effort effort, std::FILE * output);

}  // namespace tvk::bench
