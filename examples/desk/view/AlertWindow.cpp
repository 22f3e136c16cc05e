#include "examples/desk/view/AlertWindow.h"

#include <FL/Fl_Return_Button.H>

#include <string>

#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

constexpr int WIDTH = 420;
constexpr int HEIGHT = 176;
constexpr int MARGIN = 24;
constexpr int BUTTON_WIDTH = 92;
constexpr int BUTTON_HEIGHT = 28;

Fl_Box * newText(int y, int height, int size, Tone tone) {
    auto * const box = new Fl_Box(MARGIN, y, WIDTH - 2 * MARGIN, height);
    box->align(FL_ALIGN_LEFT | FL_ALIGN_TOP | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
    box->labelsize(size);
    box->labelcolor(theme::text(tone));
    return box;
}

}  // namespace

AlertWindow::AlertWindow(AlertModel & model)
    : Dialog(WIDTH, HEIGHT, "エラー"), model_(model), shownRevision_(model.revision() - 1) {
    title_ = newText(14, 28, theme::TITLE_SIZE, Tone::WARNING);
    text_ = newText(46, 48, theme::TEXT_SIZE, Tone::PLAIN);
    detail_ = newText(96, 20, theme::SMALL_SIZE, Tone::FAINT);
    auto * const close =
        new Fl_Return_Button(WIDTH - MARGIN - BUTTON_WIDTH, HEIGHT - BUTTON_HEIGHT - 16,
                             BUTTON_WIDTH, BUTTON_HEIGHT, "閉じる");
    close->callback(closed, this);
    end();
    callback(closed, this);
}

void AlertWindow::refresh(Fl_Window const & above) {
    if (model_.revision() == shownRevision_) {
        return;
    }
    shownRevision_ = model_.revision();
    if (model_.isEmpty()) {
        hide();
        return;
    }
    std::size_t const others = model_.count() - 1;
    std::string const more = others > 0 ? "（ほか " + std::to_string(others) + " 件）" : "";
    title_->copy_label((model_.title() + more).c_str());
    text_->copy_label(theme::fitted(model_.text(), text_->w(), theme::TEXT_SIZE).c_str());
    detail_->copy_label(model_.detail().c_str());
    redraw();
    if (!shown()) {
        showOver(above);
    }
}

void AlertWindow::closed(Fl_Widget * /*widget*/, void * window) {
    static_cast<AlertWindow *>(window)->model_.dismiss();
}

}  // namespace desk
