#pragma once

#include <cstdlib>
#include <new>
#include <utility>

#include "tvk/platform/EmbeddedText.h"

namespace tvk::detail {

/// Marks the constructors of values that share their block of memory with their text.
struct WithText {};

/// A StringData or NumberData with its text in one block of memory, for values that are made by the
/// thousand. In everything else it is what its base is; a copy of the text that outlives it keeps the
/// block.
///
///     void * const block = OneBlock<StringData>::allocate(length);
///     std::memcpy(OneBlock<StringData>::roomIn(block), bytes, length);
///     StringData * const value = OneBlock<StringData>::make(block, length);
template <class Value>
class OneBlock final : public Value {
public:
    static constexpr std::size_t blockSize(std::size_t length) {
        return platform::EmbeddedText::blockSize(sizeof(OneBlock), length);
    }

    /// Null where memory is out. Until make() it is a block like any other of malloc.
    static void * allocate(std::size_t length) noexcept { return std::malloc(blockSize(length)); }

    static char * roomIn(void * block) noexcept {
        return platform::EmbeddedText::roomIn(block, sizeof(OneBlock));
    }

    /// Takes over the block, whose room holds the text. Requires: 0 < length <= 0x7fffffff.
    template <class... Arguments>
    static OneBlock * make(void * block, unsigned int length, Arguments... arguments) noexcept {
        static_assert(platform::EmbeddedText::fitsBehind(sizeof(OneBlock)));
        return new (block)
            OneBlock(platform::EmbeddedText::firstText(block, sizeof(OneBlock), length),
                     std::move(arguments)...);
    }

private:
    template <class... Arguments>
    explicit OneBlock(CString && text, Arguments... arguments) noexcept
        : Value(WithText(), std::move(text), std::move(arguments)...) {}
    ~OneBlock() override = default;

    void destroyObject() const override {
        auto * const block = const_cast<OneBlock *>(this);
        char * const room = roomIn(block);
        if (platform::EmbeddedText::isAlone(room, Value::asString())) {
            std::free(block);  // with the text, and there is nothing else to end
            return;
        }
        block->~OneBlock();
        platform::EmbeddedText::leave(room);
    }
};

}  // namespace tvk::detail
