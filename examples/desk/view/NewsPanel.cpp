#include "examples/desk/view/NewsPanel.h"

#include <FL/Fl.H>

#include <utility>

#include "examples/desk/view/GridView.h"
#include "examples/desk/view/Theme.h"

namespace desk {

namespace {

constexpr int CHOICE_WIDTH = 120;
constexpr int TIME_WIDTH = 52;
constexpr int HEADLINE_ROWS = 6;
constexpr int READER_MARGINS = 8;
constexpr char TITLE_STYLE = 'A';
constexpr char BODY_STYLE = 'B';

/// FLTK keeps the pointer.
Fl_Text_Display::Style_Table_Entry const * styles() {
    static Fl_Text_Display::Style_Table_Entry const STYLES[] = {
        {theme::text(Tone::WARNING), theme::FONT, theme::TITLE_SIZE, 0},
        {theme::text(Tone::PLAIN), theme::FONT, theme::TEXT_SIZE, 0},
    };
    return STYLES;
}

}  // namespace

class NewsPanel::Grid : public GridView {
public:
    explicit Grid(NewsListModel const & model)
        : GridView(0, 0, 0, 0, {{"時刻", TIME_WIDTH, false}, {"見出し", 0, false}}),
          model_(model) {}

private:
    std::string textOf(int row, int column) const override {
        return model_.text(row, static_cast<NewsListModel::Column>(column));
    }
    Tone toneOf(int row, int column) const override {
        return model_.tone(row, static_cast<NewsListModel::Column>(column));
    }

    NewsListModel const & model_;
};

NewsPanel::NewsPanel(NewsListModel const & model)
    : Panel("ニュース"),
      model_(model),
      grid_(new Grid(model)),
      list_(new Fl_Choice(0, 0, 0, 0)),
      reader_(new Fl_Text_Display(0, 0, 0, 0)),
      shownRevision_(model.revision() - 1),
      shownArticle_(model.articleRevision() - 1) {
    list_->textsize(theme::SMALL_SIZE);
    list_->callback(listChosen, this);
    reader_->buffer(article_);
    reader_->highlight_data(&style_, styles(), 2, BODY_STYLE, nullptr, nullptr);
    reader_->box(FL_FLAT_BOX);
    reader_->color(theme::panel());
    reader_->hide_cursor();
    end();
}

NewsPanel::~NewsPanel() { reader_->buffer(nullptr); }

void NewsPanel::onRead(std::function<void(std::string const & headlineId)> function) {
    grid_->onSelected(
        [this, function = std::move(function)](int row) { function(model_.headline(row).id); });
}

void NewsPanel::refresh() {
    if (model_.revision() != shownRevision_) {
        shownRevision_ = model_.revision();
        if (model_.lists().size() != shownLists_) {
            fillLists();
        }
        grid_->setRowCount(model_.rowCount());
        grid_->select(model_.rowBeingRead());
        grid_->redraw();
    }
    if (model_.articleRevision() != shownArticle_) {
        shownArticle_ = model_.articleRevision();
        setArticle();
    }
}

/// FLTK would break lines between words alone, of which Japanese has none.
void NewsPanel::setArticle() {
    int const width = reader_->w() - Fl::scrollbar_size() - READER_MARGINS;
    std::string const title =
        theme::fitted(model_.articleTitle(), width, theme::TITLE_SIZE) + "\n\n";
    std::string const body = theme::fitted(model_.articleBody(), width, theme::TEXT_SIZE);
    article_.text((title + body).c_str());
    style_.text(
        (std::string(title.size(), TITLE_STYLE) + std::string(body.size(), BODY_STYLE)).c_str());
    reader_->scroll(0, 0);
    reader_->redraw();
}

void NewsPanel::layout() {
    int const inset = (theme::PANEL_TITLE_HEIGHT - theme::ROW_HEIGHT) / 2;
    list_->resize(x() + w() - CHOICE_WIDTH - inset, y() + inset, CHOICE_WIDTH, theme::ROW_HEIGHT);
    int const gridHeight = (HEADLINE_ROWS + 1) * theme::ROW_HEIGHT;
    grid_->resize(x(), top(), w(), gridHeight);
    reader_->resize(x() + theme::CELL_PADDING, top() + gridHeight + theme::GAP,
                    w() - theme::CELL_PADDING, innerHeight() - gridHeight - 2 * theme::GAP);
    setArticle();
}

void NewsPanel::fillLists() {
    list_->clear();
    for (NewsListModel::List const & list : model_.lists()) {
        list_->add(list.title.c_str());
    }
    list_->value(0);
    shownLists_ = model_.lists().size();
}

void NewsPanel::listChosen(Fl_Widget * widget, void * panel) {
    auto const & self = *static_cast<NewsPanel *>(panel);
    int const index = static_cast<Fl_Choice *>(widget)->value();
    if (self.onList_ && index >= 0) {
        self.onList_(self.model_.lists()[static_cast<std::size_t>(index)].id);
    }
}

}  // namespace desk
