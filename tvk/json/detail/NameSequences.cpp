#include "tvk/json/detail/NameSequences.h"

#include <algorithm>

namespace tvk::detail {

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

NameSequences::Sequence * NameSequences::otherExtended(Sequence & sequence, char const * name,
                                                       unsigned int length) {
    unsigned int siblings = 0;
    for (Sequence * at = sequence.firstLonger_; at != nullptr; at = at->sibling_) {
        if (at->endsWith(name, length)) {
            return sequence.expected_ = at;
        }
        ++siblings;
    }
    if (siblings == MAXIMUM_SIBLINGS || sequence.length_ == MAXIMUM_LENGTH ||
        length > MAXIMUM_NAME_SIZE || sequences_.size() == MAXIMUM_COUNT) {
        return nullptr;
    }
    CString text(name, static_cast<int>(length));
    Sequence & longer = sequences_.emplace_back();
    longer.name_ = std::move(text);
    longer.shorter_ = &sequence;
    longer.length_ = sequence.length_ + 1;
    longer.sibling_ = sequence.firstLonger_;
    sequence.firstLonger_ = &longer;
    return sequence.expected_ = &longer;
}

NameSequences::Sequence * NameSequences::otherPassedOver(Sequence & sequence) {
    if (sequences_.size() == MAXIMUM_COUNT) {
        return sequence.shorter_;
    }
    Sequence & passedOver = sequences_.emplace_back();
    passedOver.name_ = sequence.name_;
    passedOver.shorter_ = sequence.shorter_;
    passedOver.isPassedOver_ = true;
    passedOver.length_ = sequence.length_;
    return sequence.passedOver_ = &passedOver;
}

void NameSequences::forgetIfFull() {
    if (sequences_.size() == MAXIMUM_COUNT) {
        empty_.expected_ = nullptr;
        empty_.firstLonger_ = nullptr;
        sequences_.clear();
    }
}

}  // namespace tvk::detail
