#include "examples/desk/view/ChartPanel.h"

#include <FL/Fl_Widget.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "examples/desk/view/Theme.h"
#include "examples/support/CandleScale.h"

namespace desk {

namespace {

constexpr int CHOICE_WIDTH = 84;
constexpr int PRICE_WIDTH = 64;     // right of the candles
constexpr int TIME_HEIGHT = 20;     // below the volumes
constexpr int CAPTION_HEIGHT = 20;  // above the candles
constexpr int LABEL_HEIGHT = 16;
constexpr double VOLUME_SHARE = 0.2;
constexpr int MARK_DISTANCE = 40;
constexpr double TIME_MARK_DISTANCE = 80;

int pixel(double place) { return static_cast<int>(std::lround(place)); }

Tone toneOf(Candle const & candle) { return candle.isRising() ? Tone::UP : Tone::DOWN; }

}  // namespace

class ChartPanel::Canvas : public Fl_Widget {
public:
    explicit Canvas(ChartModel const & model) : Fl_Widget(0, 0, 0, 0), model_(model) {}

private:
    using Area = CandleScale::Area;

    Area pricesArea() const {
        Area const volumes = volumesArea();
        double const top = y() + CAPTION_HEIGHT + theme::GAP;
        return {volumes.left, top, volumes.width, volumes.top - theme::GAP - top};
    }

    Area volumesArea() const {
        double const height = std::max(0.0, (h() - TIME_HEIGHT - CAPTION_HEIGHT) * VOLUME_SHARE);
        return {static_cast<double>(x() + theme::GAP), y() + h() - TIME_HEIGHT - height,
                static_cast<double>(w() - PRICE_WIDTH - theme::GAP), height};
    }

    void draw() override {
        fl_push_clip(x(), y(), w(), h());
        fl_color(theme::panel());
        fl_rectf(x(), y(), w(), h());
        fl_font(theme::FONT, theme::SMALL_SIZE);
        if (model_.candles().empty()) {
            fl_color(theme::text(Tone::FAINT));
            theme::drawText("データを待っています", x(), y(), w(), h(), FL_ALIGN_CENTER);
        } else {
            drawChart(CandleScale(model_.candles(), pricesArea(), volumesArea()));
        }
        fl_pop_clip();
    }

    void drawChart(CandleScale const & scale) {
        drawCaption();
        drawPriceMarks(scale);
        drawTimeMarks(scale);
        for (std::size_t index = 0; index < model_.candles().size(); ++index) {
            drawCandle(scale, index);
        }
        drawLastPrice(scale);
    }

    void drawCaption() {
        fl_color(theme::text(model_.tone()));
        theme::drawText(model_.caption(), x() + theme::GAP, y(), w() - PRICE_WIDTH, CAPTION_HEIGHT,
                        FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
    }

    void drawPriceMarks(CandleScale const & scale) {
        Area const area = pricesArea();
        int const atMost = std::max(2, static_cast<int>(area.height) / MARK_DISTANCE);
        int const lastPrice = pixel(scale.yOf(model_.candles().back().close));
        for (double const price : scale.priceMarks(atMost).prices) {
            int const place = pixel(scale.yOf(price));
            fl_color(theme::line());
            fl_xyline(pixel(area.left), place, pixel(area.right()));
            // The last price has a label of its own.
            if (std::abs(place - lastPrice) > LABEL_HEIGHT) {
                fl_color(theme::text(Tone::FAINT));
                drawPrice(price, place);
            }
        }
        Area const volumes = volumesArea();
        fl_color(theme::line());
        fl_xyline(pixel(volumes.left), pixel(volumes.bottom()), pixel(volumes.right()));
    }

    void drawPrice(double price, int place) {
        theme::drawText(model_.priceText(price), x() + w() - PRICE_WIDTH, place - LABEL_HEIGHT / 2,
                        PRICE_WIDTH - theme::CELL_PADDING, LABEL_HEIGHT,
                        FL_ALIGN_RIGHT | FL_ALIGN_INSIDE);
    }

    void drawTimeMarks(CandleScale const & scale) {
        int const width = static_cast<int>(TIME_MARK_DISTANCE);
        for (std::size_t const index : scale.timeMarks(TIME_MARK_DISTANCE)) {
            int const middle = pixel(scale.middleOf(index));
            // A label that would be cut at the left edge says nothing.
            if (middle - x() < LABEL_HEIGHT) {
                continue;
            }
            fl_color(theme::line());
            fl_yxline(middle, pixel(pricesArea().top), pixel(volumesArea().bottom()));
            fl_color(theme::text(Tone::FAINT));
            theme::drawText(model_.timeText(index), middle - width / 2, y() + h() - TIME_HEIGHT,
                            width, TIME_HEIGHT, FL_ALIGN_CENTER);
        }
    }

    void drawCandle(CandleScale const & scale, std::size_t index) {
        Candle const & candle = model_.candles()[index];
        int const width = std::max(1, pixel(scale.bodyWidth()) | 1);  // odd: the wick in the middle
        int const middle = pixel(scale.middleOf(index));
        int const left = middle - width / 2;
        Fl_Color const colour = theme::text(toneOf(candle));

        int const volumeTop = pixel(scale.yOfVolume(candle.volume));
        fl_color(fl_color_average(colour, theme::panel(), 0.45F));
        fl_rectf(left, volumeTop, width, pixel(volumesArea().bottom()) - volumeTop);

        fl_color(colour);
        fl_yxline(middle, pixel(scale.yOf(candle.high)), pixel(scale.yOf(candle.low)));
        int const bodyTop = pixel(scale.yOf(std::max(candle.open, candle.close)));
        int const bodyBottom = pixel(scale.yOf(std::min(candle.open, candle.close)));
        fl_rectf(left, bodyTop, width, std::max(1, bodyBottom - bodyTop));
    }

    /// Where the newest candle stands, across the whole chart; filled while it is live.
    void drawLastPrice(CandleScale const & scale) {
        Candle const & newest = model_.candles().back();
        int const place = pixel(scale.yOf(newest.close));
        Fl_Color const colour = theme::text(toneOf(newest));
        Area const area = pricesArea();
        fl_color(colour);
        fl_line_style(FL_DOT);
        fl_xyline(pixel(area.left), place, pixel(area.right()));
        fl_line_style(0);
        int const left = x() + w() - PRICE_WIDTH + 2;
        fl_color(model_.isLive() ? colour : theme::heading());
        fl_rectf(left, place - LABEL_HEIGHT / 2 - 1, PRICE_WIDTH - 2, LABEL_HEIGHT + 2);
        fl_color(model_.isLive() ? theme::window() : colour);
        drawPrice(newest.close, place);
    }

    ChartModel const & model_;
};

ChartPanel::ChartPanel(ChartModel const & model)
    : Panel("チャート"),
      model_(model),
      canvas_(new Canvas(model)),
      period_(new Fl_Choice(0, 0, 0, 0)),
      shownRevision_(model.revision() - 1) {
    period_->textsize(theme::SMALL_SIZE);
    period_->callback(periodChosen, this);
    end();
}

void ChartPanel::refresh() {
    if (model_.revision() == shownRevision_) {
        return;
    }
    shownRevision_ = model_.revision();
    if (model_.periods() != shownPeriods_) {
        fillPeriods();
    }
    for (std::size_t index = 0; index < shownPeriods_.size(); ++index) {
        if (shownPeriods_[index] == model_.period()) {
            period_->value(static_cast<int>(index));
        }
    }
    setTitle(model_.title());
    canvas_->redraw();
}

void ChartPanel::layout() {
    int const inset = (theme::PANEL_TITLE_HEIGHT - theme::ROW_HEIGHT) / 2;
    period_->resize(x() + w() - CHOICE_WIDTH - inset, y() + inset, CHOICE_WIDTH, theme::ROW_HEIGHT);
    canvas_->resize(x(), top(), w(), innerHeight());
}

void ChartPanel::fillPeriods() {
    shownPeriods_ = model_.periods();
    period_->clear();
    for (std::string const & period : shownPeriods_) {
        period_->add(ChartModel::periodText(period).c_str());
    }
}

void ChartPanel::periodChosen(Fl_Widget * widget, void * panel) {
    auto const & self = *static_cast<ChartPanel *>(panel);
    int const index = static_cast<Fl_Choice *>(widget)->value();
    if (self.onPeriod_ && index >= 0) {
        self.onPeriod_(self.shownPeriods_[static_cast<std::size_t>(index)]);
    }
}

}  // namespace desk
