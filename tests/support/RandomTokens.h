#pragma once

#include <cstddef>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tvk::test {

/// Texts made of the tokens of a language in any order, of each the same number on average.
class RandomTokens {
public:
    RandomTokens(unsigned int seed, std::initializer_list<std::string_view> tokens)
        : random_(seed), tokens_(tokens) {}

    /// Of at most that many tokens.
    std::string text(unsigned int mostTokens) {
        std::string result;
        for (unsigned int count = below(mostTokens + 1); count > 0; --count) {
            result += tokens_[below(static_cast<unsigned int>(tokens_.size()))];
        }
        return result;
    }

private:
    unsigned int below(unsigned int bound) { return static_cast<unsigned int>(random_()) % bound; }

    std::mt19937 random_;
    std::vector<std::string_view> tokens_;
};

}  // namespace tvk::test
