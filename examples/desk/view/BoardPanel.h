#pragma once

#include <functional>
#include <string>

#include "examples/desk/model/QuoteBoardModel.h"
#include "examples/desk/view/GridView.h"
#include "examples/desk/view/Panel.h"

namespace desk {

/// The quote board. Cells that change light up and fade.
class BoardPanel : public Panel {
public:
    explicit BoardPanel(QuoteBoardModel const & model);

    void onSelected(std::function<void(std::string const & code)> function);
    void refresh(long long now);
    void select(std::string const & code);

private:
    class Grid;

    void layout() override;

    QuoteBoardModel const & model_;
    Grid * grid_;  // FLTK owns it
    unsigned int shownRevision_;
    bool wasFlashing_ = false;
};

}  // namespace desk
