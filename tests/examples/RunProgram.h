#pragma once

#include <string>
#include <vector>

namespace tvk::test {

struct Input {
    std::string text;
    int secondsBeforeLastLine = 0;  ///< how long standard input stalls there
};

struct Outcome {
    int exitStatus = -1;  ///< -1 if a signal ended the program
    std::string out;
    std::string err;
};

enum class ErrorsTo { PIPE, TERMINAL };

/// Runs a program to its end on a stack of 8 MB. What is wrong with the running itself is a test
/// failure.
Outcome runProgram(std::string const & program, std::vector<std::string> const & arguments,
                   Input const & input = {}, ErrorsTo errorsTo = ErrorsTo::PIPE);

/// All bytes of a file; none where it cannot be read.
std::string contentOf(std::string const & name);

}  // namespace tvk::test
