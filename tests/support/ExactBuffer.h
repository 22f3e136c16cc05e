#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>

namespace tvk::test {

/// Bytes in a heap block that ends right behind the last of them, with no NUL there: a sanitizer
/// sees a read of one byte too many, also behind an empty text.
class ExactBuffer {
public:
    explicit ExactBuffer(std::string_view bytes)
        : size_(bytes.size()), block_(std::make_unique<char[]>(FRONT + size_)) {
        std::copy(bytes.begin(), bytes.end(), data());
    }
    ExactBuffer(void const * bytes, std::size_t size)
        : ExactBuffer(std::string_view(static_cast<char const *>(bytes), size)) {}

    char * data() noexcept { return block_.get() + FRONT; }
    char const * data() const noexcept { return block_.get() + FRONT; }
    operator char const *() const noexcept { return data(); }

    std::size_t size() const noexcept { return size_; }
    /// The size as the interfaces of the library take it.
    unsigned int length() const noexcept { return static_cast<unsigned int>(size_); }

private:
    static constexpr std::size_t FRONT =
        16;  // an empty block would be given a byte; 16 keeps the alignment

    std::size_t size_;
    std::unique_ptr<char[]> block_;
};

}  // namespace tvk::test
