#pragma once

#include <cstring>
#include <deque>
#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/values/detail/FieldShape.h"

namespace tvk::detail {

/// The sequences of field names that records have come with, each as one more name behind a shorter
/// sequence. Messages of one kind carry the same names in the same order, so as a record is read the
/// next name is nearly always the one that followed last time: one comparison finds it, and at its
/// end the record gets the shape of the whole sequence.
///
/// Memory: bounded, whatever the input holds; where the bounds are reached, nothing more is learned
///         until forgetIfFull.
class NameSequences {
public:
    class Sequence {
    public:
        /// The last name. The empty sequence has none.
        CString const & name() const { return name_; }
        /// From the first name to the last one, without those that were passed over.
        std::vector<CString const *> names() const;
        /// Made when it is first asked for; the empty sequence has none.
        ShapeReference shape();

    private:
        friend class NameSequences;

        bool endsWith(char const * name, unsigned int length) const {
            return static_cast<unsigned int>(name_.GetLength()) == length &&
                   std::memcmp(name_.GetString(), name, length) == 0;
        }

        CString name_;
        Sequence * shorter_ = nullptr;
        bool isPassedOver_ = false;  // the last name
        unsigned int length_ = 0;
        Sequence * expected_ = nullptr;  // the longer one that came last
        Sequence * firstLonger_ = nullptr;
        Sequence * sibling_ = nullptr;     // another one with the same names before the last
        Sequence * passedOver_ = nullptr;  // the same names, the last one passed over
        ShapeSource shape_;
    };

    Sequence * empty() { return &empty_; }

    /// The sequence with one more name, or null where none is kept.
    Sequence * extended(Sequence & sequence, char const * name, unsigned int length) {
        Sequence * const expected = sequence.expected_;
        return expected != nullptr && expected->endsWith(name, length)
                   ? expected
                   : otherExtended(sequence, name, length);
    }

    /// The sequence where the last name brings no field with it: a null came. It has the shape of the
    /// shorter one, but it knows what follows such a name.
    Sequence * lastPassedOver(Sequence & sequence) {
        return sequence.passedOver_ != nullptr ? sequence.passedOver_ : otherPassedOver(sequence);
    }

    /// Starts anew when the bounds have been reached. No sequence may be in use.
    void forgetIfFull();

private:
    static constexpr std::size_t MAXIMUM_COUNT = 2048;
    static constexpr unsigned int MAXIMUM_LENGTH = 128;
    static constexpr unsigned int MAXIMUM_NAME_SIZE = 64;
    static constexpr unsigned int MAXIMUM_SIBLINGS = 32;

    Sequence * otherExtended(Sequence & sequence, char const * name, unsigned int length);
    Sequence * otherPassedOver(Sequence & sequence);

    Sequence empty_;
    std::deque<Sequence> sequences_;
};

}  // namespace tvk::detail
