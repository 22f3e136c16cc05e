#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/values/detail/FieldShape.h"

namespace tvk::detail {

/// The sequences of field names that records have come with, each as one more name behind a shorter
/// sequence. Messages of one kind carry the same names in the same order, so as a record is read the
/// next name is nearly always one that has followed before: a comparison with the text that it has
/// on the wire finds it, and at its end the record gets the shape of the whole sequence.
///
/// Memory: bounded, whatever the input holds; where the bounds are reached, nothing more is learned
///         until forgetIfFull.
class NameSequences {
public:
    /// What finding the next name takes stands at its start.
    class alignas(64) Sequence {
    public:
        Sequence() = default;
        /// One more name, or, where `isPassedOver`, a name that brings no field.
        Sequence(Sequence & shorter, CString const & name, bool isPassedOver);

        /// The longer sequence with the name that stands at the start of the text, in quotes and with a
        /// colon behind it; null where it cannot be told without a closer look, or is not known.
        Sequence * next(char const * text, std::size_t left) {
            if (left < 2 * sizeof(std::uint64_t)) {
                return nullptr;
            }
            std::uint64_t const first = wordAt(text);
            std::uint64_t const second = wordAt(text + sizeof first);
            if (expected_ != nullptr && expected_->stands(first, second, text, left)) {
                return expected_;
            }
            return otherNext(first, second, text, left);
        }
        /// The bytes of the last name on the wire, as next() finds them; 0 where it finds none.
        unsigned int wireSize() const { return wireSize_; }

        /// The last name. The empty sequence has none.
        CString const & name() const { return name_; }
        /// From the first name to the last one, without those that were passed over.
        std::vector<CString const *> names() const;
        /// Made when it is first asked for; a sequence without names has none.
        ShapeReference shape();

    private:
        friend class NameSequences;

        /// Names whose form on the wire fits two words are compared by them alone.
        static constexpr unsigned int SHORT_SIZE = 2 * sizeof(std::uint64_t);
        static constexpr unsigned int MOST_TRIED = 4;

        static std::uint64_t wordAt(char const * bytes) {
            std::uint64_t word;
            std::memcpy(&word, bytes, sizeof word);
            return word;
        }

        bool stands(std::uint64_t first, std::uint64_t second, char const * text,
                    std::size_t left) const {
            return ((first ^ wire_[0]) & mask_[0]) == 0 && ((second ^ wire_[1]) & mask_[1]) == 0 &&
                   (wireSize_ <= SHORT_SIZE || standsWhole(text, left));
        }
        bool standsWhole(char const * text, std::size_t left) const;
        Sequence * otherNext(std::uint64_t first, std::uint64_t second, char const * text,
                             std::size_t left);
        bool endsWith(char const * name, unsigned int length) const {
            return static_cast<unsigned int>(name_.GetLength()) == length &&
                   std::memcmp(name_.GetString(), name, length) == 0;
        }
        void keepWire();

        // The name on the wire with its quotes and a colon: its first bytes, and which of them count.
        // A name that stands there otherwise has the size 0, and no name looks like its words.
        std::uint64_t wire_[2] = {0, 0};
        std::uint64_t mask_[2] = {0, 0};
        Sequence * expected_ = nullptr;  // the longer one that came last
        Sequence * firstLonger_ = nullptr;
        Sequence * sibling_ = nullptr;  // another one with the same names before the last
        unsigned int wireSize_ = 0;
        bool isPassedOver_ = false;  // the last name

        CString name_;
        Sequence * shorter_ = nullptr;
        unsigned int length_ = 0;
        Sequence * passedOver_ = nullptr;  // the same names, the last one passed over
        ShapeSource shape_;
    };

    NameSequences();

    Sequence * empty() { return &sequences_.front(); }

    /// The sequence with one more name, or null where none is kept.
    Sequence * extended(Sequence & sequence, char const * name, unsigned int length);

    /// The sequence where the last name brings no field with it: a null came. It has the shape of the
    /// shorter one, but it knows what follows such a name.
    Sequence * lastPassedOver(Sequence & sequence);

    /// Starts anew when the bounds have been reached. No sequence may be in use.
    void forgetIfFull();

private:
    static constexpr std::size_t MAXIMUM_COUNT = 2048;
    static constexpr unsigned int MAXIMUM_LENGTH = 128;
    static constexpr unsigned int MAXIMUM_NAME_SIZE = 64;
    static constexpr unsigned int MAXIMUM_SIBLINGS = 32;

    bool isFull() const { return sequences_.size() > MAXIMUM_COUNT; }

    std::deque<Sequence> sequences_;  // the empty one first
};

inline NameSequences::Sequence * NameSequences::lastPassedOver(Sequence & sequence) {
    if (sequence.passedOver_ == nullptr) {
        if (isFull()) {
            return sequence.shorter_;
        }
        sequence.passedOver_ = &sequences_.emplace_back(*sequence.shorter_, sequence.name_, true);
    }
    return sequence.passedOver_;
}

}  // namespace tvk::detail
