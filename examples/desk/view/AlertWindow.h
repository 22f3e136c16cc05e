#pragma once

#include <FL/Fl_Box.H>

#include "examples/desk/model/AlertModel.h"
#include "examples/desk/view/Dialog.h"

namespace desk {

/// Shows the alert that waits first, until the user closes it. The desk goes on behind it.
class AlertWindow : public Dialog {
public:
    explicit AlertWindow(AlertModel & model);

    void refresh(Fl_Window const & above);

private:
    static void closed(Fl_Widget * widget, void * window);

    AlertModel & model_;
    // FLTK owns them.
    Fl_Box * title_;
    Fl_Box * text_;
    Fl_Box * detail_;
    unsigned int shownRevision_;
};

}  // namespace desk
