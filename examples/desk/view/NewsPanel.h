#pragma once

#include <FL/Fl_Choice.H>
#include <FL/Fl_Text_Buffer.H>
#include <FL/Fl_Text_Display.H>

#include <functional>
#include <string>

#include "examples/desk/model/NewsListModel.h"
#include "examples/desk/view/Panel.h"

namespace desk {

/// The headlines of one list, and the article that is being read.
class NewsPanel : public Panel {
public:
    explicit NewsPanel(NewsListModel const & model);
    ~NewsPanel() override;
    NewsPanel(NewsPanel const &) = delete;
    NewsPanel & operator=(NewsPanel const &) = delete;

    void onList(std::function<void(std::string const & listId)> function) {
        onList_ = std::move(function);
    }
    void onRead(std::function<void(std::string const & headlineId)> function);
    void refresh();

private:
    class Grid;

    void layout() override;
    void setArticle();
    void fillLists();
    static void listChosen(Fl_Widget * widget, void * panel);

    NewsListModel const & model_;
    // FLTK owns the widgets, but not the buffer.
    Grid * grid_;
    Fl_Choice * list_;
    Fl_Text_Display * reader_;
    Fl_Text_Buffer article_;
    Fl_Text_Buffer style_;
    std::function<void(std::string const &)> onList_;
    unsigned int shownRevision_;
    unsigned int shownArticle_;
    std::size_t shownLists_ = 0;
};

}  // namespace desk
