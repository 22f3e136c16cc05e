#pragma once

#include <FL/Fl_Widget.H>

#include <array>
#include <string>

#include "examples/desk/model/StatusModel.h"

namespace desk {

/// The line at the window's foot.
class StatusBar : public Fl_Widget {
public:
    explicit StatusBar(StatusModel const & model) : Fl_Widget(0, 0, 0, 0), model_(model) {}

    void refresh(long long now);

private:
    void draw() override;

    StatusModel const & model_;
    std::array<std::string, 4> texts_;  // connection, login, notices, time
};

}  // namespace desk
