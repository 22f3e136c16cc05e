#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>

namespace session {

/// The account of a session: sections, lines behind the time since the start, and expectations with
/// their outcome. Texts are UTF-8.
class Account {
public:
    /// `out` must outlive the account. One that is quiet prints only what did not hold and the last line.
    Account(std::ostream & out, bool isQuiet);

    void section(std::string const & title);
    void say(std::string const & line);
    /// A line of two columns: what it is about, and the rest.
    void say(std::string const & about, std::string const & line);
    /// Lines that stand below each other, a little to the right.
    void table(std::string const & lines);
    /// Counts the expectation and prints whether it held; returns that too.
    bool expect(bool held, std::string const & what);
    /// The last line: how many expectations there were and how many held.
    void close();

    bool allHeld() const { return held_ == count_; }
    std::size_t count() const { return count_; }

private:
    std::string time() const;

    std::ostream & out_;
    bool const isQuiet_;
    std::chrono::steady_clock::time_point const start_ = std::chrono::steady_clock::now();
    std::size_t count_ = 0;
    std::size_t held_ = 0;
};

}  // namespace session
