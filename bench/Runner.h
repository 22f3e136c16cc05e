#pragma once

#include <chrono>
#include <cstdio>
#include <span>

#include "bench/Rows.h"

namespace tvk::bench {

struct Effort {
    int rounds = 21;
    std::chrono::nanoseconds slice = std::chrono::milliseconds(10);
    std::chrono::milliseconds patience = std::chrono::minutes(1);  ///< with one turn of a row
};

/// Runs rows and writes an object of JSON a line: `{"group": NAME}` when a group begins, and for each row
/// what was measured, or why not.
///
/// Each row has a process of its own, so that no heap is littered by another, and one that crashes or
/// hangs loses itself alone. The rows of a group are set up and compared first, and then take turns:
/// a slice of time each, round after round, each round in another order. A time is that of the
/// thread on a processor, a document.
void runRows(std::span<Row const> rows, Effort effort, std::FILE * output);

}  // namespace tvk::bench
