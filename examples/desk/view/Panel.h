#pragma once

#include <FL/Fl_Group.H>

#include <string>

namespace desk {

/// A part of the window under a title. Whoever derives adds the widgets and gives them their places.
class Panel : public Fl_Group {
public:
    void resize(int x, int y, int w, int h) override;

protected:
    explicit Panel(std::string title);

    void setTitle(std::string title);
    /// Gives the widgets their places. Called with each new size.
    virtual void layout() = 0;
    // What is left below the title.
    int top() const;
    int innerHeight() const;
    void draw() override;

private:
    std::string title_;
};

}  // namespace desk
