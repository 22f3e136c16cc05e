#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace tvk::detail {

/// A stack whose first ROOM elements need no allocation.
template <class Element, std::size_t ROOM>
class InlineStack {
public:
    InlineStack() = default;
    InlineStack(InlineStack const &) = delete;
    InlineStack & operator=(InlineStack const &) = delete;
    ~InlineStack() {
        while (!empty()) {
            pop();
        }
    }

    bool empty() const { return size_ == 0; }

    void push(Element && element) {
        if (size_ < ROOM) {
            std::construct_at(inPlace(size_), std::move(element));
        } else {
            beyond_.push_back(std::move(element));
        }
        ++size_;
    }

    /// Requires: not empty. So for pop.
    Element & top() { return size_ <= ROOM ? *inPlace(size_ - 1) : beyond_.back(); }

    void pop() {
        if (size_ <= ROOM) {
            std::destroy_at(inPlace(size_ - 1));
        } else {
            beyond_.pop_back();
        }
        --size_;
    }

private:
    Element * inPlace(std::size_t index) { return reinterpret_cast<Element *>(places_) + index; }

    std::size_t size_ = 0;
    alignas(Element) unsigned char places_[ROOM * sizeof(Element)];
    std::vector<Element> beyond_;
};

}  // namespace tvk::detail
