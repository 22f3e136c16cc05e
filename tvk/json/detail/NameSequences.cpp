#include "tvk/json/detail/NameSequences.h"

namespace tvk::detail {

std::vector<CString const *> NameSequences::Sequence::names() const {
    std::vector<CString const *> names(length_);
    Sequence const * at = this;
    for (std::size_t i = length_; i-- > 0; at = at->shorter_) {
        names[i] = &at->name_;
    }
    return names;
}

std::shared_ptr<FieldShape const> const & NameSequences::Sequence::shape() {
    if (shape_ == nullptr) {
        shape_ = std::make_shared<FieldShape const>(names());
    }
    return shape_;
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

void NameSequences::forgetIfFull() {
    if (sequences_.size() == MAXIMUM_COUNT) {
        empty_.expected_ = nullptr;
        empty_.firstLonger_ = nullptr;
        sequences_.clear();
    }
}

}  // namespace tvk::detail
