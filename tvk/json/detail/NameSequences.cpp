#include "tvk/json/detail/NameSequences.h"

#include <algorithm>
#include <string>

namespace tvk::detail {

NameSequences::NameSequences() { sequences_.emplace_back(); }

NameSequences::Sequence * NameSequences::extended(Sequence & sequence, char const * name,
                                                  unsigned int length) {
    unsigned int siblings = 0;
    for (Sequence * at = sequence.firstLonger_; at != nullptr; at = at->sibling_) {
        if (at->endsWith(name, length)) {
            return sequence.expected_ = at;
        }
        ++siblings;
    }
    if (siblings == MAXIMUM_SIBLINGS || sequence.length_ == MAXIMUM_LENGTH ||
        length > MAXIMUM_NAME_SIZE || isFull()) {
        return nullptr;
    }
    Sequence & longer =
        sequences_.emplace_back(sequence, CString(name, static_cast<int>(length)), false);
    longer.sibling_ = sequence.firstLonger_;
    sequence.firstLonger_ = &longer;
    return sequence.expected_ = &longer;
}

void NameSequences::forgetIfFull() {
    if (isFull()) {
        sequences_.clear();
        sequences_.emplace_back();
    }
}

NameSequences::Sequence::Sequence(Sequence & shorter, CString const & name, bool isPassedOver)
    : isPassedOver_(isPassedOver), name_(name), shorter_(&shorter), length_(shorter.length_ + 1) {
    keepWire();
}

std::vector<CString const *> NameSequences::Sequence::names() const {
    std::vector<CString const *> names;
    names.reserve(length_);
    for (Sequence const * at = this; at->shorter_ != nullptr; at = at->shorter_) {
        if (!at->isPassedOver_) {
            names.push_back(&at->name_);
        }
    }
    std::reverse(names.begin(), names.end());
    return names;
}

ShapeReference NameSequences::Sequence::shape() {
    Sequence * sequence = this;
    while (sequence->isPassedOver_) {
        sequence = sequence->shorter_;
    }
    if (sequence->shorter_ == nullptr) {
        return ShapeReference();
    }
    if (sequence->shape_.isEmpty()) {
        sequence->shape_.set(new FieldShape(sequence->names()));
    }
    return sequence->shape_.next();
}

/// Requires: the first two words stand there.
bool NameSequences::Sequence::standsWhole(char const * text, std::size_t left) const {
    auto const length = static_cast<std::size_t>(name_.GetLength());
    return left >= wireSize_ && std::memcmp(text + 1, name_.GetString(), length) == 0 &&
           text[length + 1] == '"' && text[length + 2] == ':';
}

NameSequences::Sequence * NameSequences::Sequence::otherNext(std::uint64_t first,
                                                             std::uint64_t second,
                                                             char const * text, std::size_t left) {
    Sequence * longer = firstLonger_;
    for (unsigned int i = 0; i < MOST_TRIED && longer != nullptr; ++i) {
        if (longer->stands(first, second, text, left)) {
            return expected_ = longer;
        }
        longer = longer->sibling_;
    }
    return nullptr;
}

/// A name of plain bytes stands on the wire as it is, if no other form was chosen.
void NameSequences::Sequence::keepWire() {
    bool isPlain = true;
    std::string wire = "\"";
    for (int i = 0; i < name_.GetLength(); ++i) {
        char const byte = name_[i];
        isPlain = isPlain && static_cast<signed char>(byte) > 0 && byte != '"' && byte != '\\';
        wire += byte;
    }
    wire += "\":";
    if (!isPlain) {
        mask_[0] = ~std::uint64_t{0};
        return;
    }
    wireSize_ = static_cast<unsigned int>(wire.size());
    unsigned char bytes[SHORT_SIZE] = {};
    unsigned char mask[SHORT_SIZE] = {};
    std::size_t const kept = std::min<std::size_t>(wire.size(), SHORT_SIZE);
    std::copy_n(wire.data(), kept, bytes);
    std::memset(mask, 0xFF, kept);
    std::memcpy(wire_, bytes, SHORT_SIZE);
    std::memcpy(mask_, mask, SHORT_SIZE);
}

}  // namespace tvk::detail
