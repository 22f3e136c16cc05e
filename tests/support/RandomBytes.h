#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>

namespace tvk::test {

/// Random bytes from a fixed seed.
class RandomBytes {
public:
    explicit RandomBytes(unsigned int seed) : random_(seed) {}

    std::string operator()(std::size_t size) {
        std::string bytes(size, '\0');
        std::generate(bytes.begin(), bytes.end(),
                      [this] { return static_cast<char>(random_() & 0xFF); });
        return bytes;
    }

private:
    std::mt19937 random_;
};

}  // namespace tvk::test
