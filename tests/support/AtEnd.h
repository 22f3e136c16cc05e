#pragma once

#include <functional>
#include <utility>

namespace tvk::test {

/// A class whose objects run `act` when they end, before anything of them is gone.
template <class Base>
class AtEnd : public Base {
public:
    template <class... Arguments>
    explicit AtEnd(std::function<void()> act, Arguments &&... arguments)
        : Base(std::forward<Arguments>(arguments)...), act_(std::move(act)) {}

protected:
    ~AtEnd() override { act_(); }

private:
    std::function<void()> act_;
};

}  // namespace tvk::test
