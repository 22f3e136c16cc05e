#include "examples/session/Account.h"

#include <algorithm>
#include <ostream>
#include <sstream>

namespace session {

namespace {

constexpr std::size_t TIME_WIDTH = 6;
constexpr std::size_t ABOUT_WIDTH = 10;
constexpr std::size_t VERDICT_WIDTH = 6;

std::string toTheRight(std::string const & text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string padded(std::string const & text, std::size_t width) {
    return text + std::string(width - std::min(width, text.size()), ' ');
}

}  // namespace

Account::Account(std::ostream & out, bool isQuiet) : out_(out), isQuiet_(isQuiet) {}

void Account::section(std::string const & title) {
    if (!isQuiet_) {
        out_ << '\n' << title << "\n\n" << std::flush;
    }
}

void Account::say(std::string const & line) {
    if (!isQuiet_) {
        out_ << time() << "  " << line << '\n';
    }
}

void Account::say(std::string const & about, std::string const & line) {
    say(padded(about, ABOUT_WIDTH) + "  " + line);
}

void Account::table(std::string const & lines) {
    std::istringstream input(lines);
    for (std::string line; !isQuiet_ && std::getline(input, line);) {
        out_ << std::string(TIME_WIDTH + 2, ' ') << line << '\n';
    }
}

bool Account::expect(bool held, std::string const & what) {
    ++count_;
    held_ += held ? 1 : 0;
    if (!held || !isQuiet_) {
        std::string const verdict = held ? "ok" : "FAILED";
        out_ << toTheRight(verdict, VERDICT_WIDTH) << "  " << what << '\n' << std::flush;
    }
    return held;
}

void Account::close() {
    out_ << (isQuiet_ ? "" : "\n") << held_ << " of " << count_ << " expectations held\n"
         << std::flush;
}

std::string Account::time() const {
    auto const passed = std::chrono::steady_clock::now() - start_;
    auto const milliSec = std::chrono::duration_cast<std::chrono::milliseconds>(passed).count();
    return toTheRight(std::to_string(milliSec), TIME_WIDTH);
}

}  // namespace session
