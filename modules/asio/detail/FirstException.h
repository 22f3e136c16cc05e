#pragma once

#include <exception>

namespace tvk::detail {

/// Lets several things happen though some of them throw, and tells of the first exception in the end.
class FirstException {
public:
    template <class Function>
    void of(Function const & function) {
        try {
            function();
        } catch (...) {
            if (first_ == nullptr) {
                first_ = std::current_exception();
            }
        }
    }
    void rethrow() const {
        if (first_ != nullptr) {
            std::rethrow_exception(first_);
        }
    }

private:
    std::exception_ptr first_;
};

}  // namespace tvk::detail
