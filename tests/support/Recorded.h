#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tvk::test {

/// What happened, in its order.
using Log = std::vector<std::string>;

/// A class of the library whose objects write their name into a log when they end, from destroyObject
/// and again from the destructor: "end a", "gone a".
template <class Base>
class Recorded : public Base {
public:
    template <class... Arguments>
    Recorded(Log * log, std::string name, Arguments &&... arguments)
        : Base(std::forward<Arguments>(arguments)...), log_(log), name_(std::move(name)) {}

protected:
    ~Recorded() override { log_->push_back("gone " + name_); }

    void destroyObject() const override {
        log_->push_back("end " + name_);
        Base::destroyObject();
    }

private:
    Log * log_;
    std::string name_;
};

}  // namespace tvk::test
