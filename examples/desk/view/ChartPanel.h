#pragma once

#include <FL/Fl_Choice.H>

#include <functional>
#include <string>
#include <vector>

#include "examples/desk/model/ChartModel.h"
#include "examples/desk/view/Panel.h"

namespace desk {

/// The candlestick chart, with the choice of its period.
class ChartPanel : public Panel {
public:
    explicit ChartPanel(ChartModel const & model);

    void onPeriod(std::function<void(std::string const & period)> function) {
        onPeriod_ = std::move(function);
    }
    void refresh();

private:
    class Canvas;

    void layout() override;
    void fillPeriods();
    static void periodChosen(Fl_Widget * widget, void * panel);

    ChartModel const & model_;
    Canvas * canvas_;  // FLTK owns both
    Fl_Choice * period_;
    std::function<void(std::string const &)> onPeriod_;
    std::vector<std::string> shownPeriods_;
    unsigned int shownRevision_;
};

}  // namespace desk
