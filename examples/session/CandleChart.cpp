#include "examples/session/CandleChart.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>

#include "examples/support/CandleScale.h"
#include "examples/support/Printable.h"

namespace session {

namespace {

constexpr double WIDTH = 960;
constexpr double HEIGHT = 540;
constexpr CandleScale::Area PRICES{24, 84, 852, 310};
constexpr CandleScale::Area VOLUMES{24, 414, 852, 76};
constexpr int PRICE_MARKS = 8;
constexpr double TIME_DISTANCE = 96;
constexpr double LABEL_DROP = 4;  // from the middle of a digit down to its foot
constexpr double THINNEST = 1;    // of what must be seen
constexpr std::size_t TEXT_BYTES = 400;

constexpr char RISING[] = "#c8372d";
constexpr char FALLING[] = "#2b5fa8";
constexpr char INK[] = "#222831";
constexpr char PALE_INK[] = "#6b7480";
constexpr char GRID[] = "#e4e7eb";

std::string fixed(double number, int decimals) {
    char text[std::numeric_limits<double>::max_exponent10 + 32];
    auto const result =
        std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, decimals);
    return {text, result.ptr};
}

std::string place(double number) { return fixed(number, 1); }

/// Text between tags or in an attribute.
std::string escaped(std::string const & text) {
    std::string out;
    for (char const byte : printable(text, TEXT_BYTES)) {
        switch (byte) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&#39;";
                break;
            default:
                out += byte;
        }
    }
    return out;
}

bool isDigits(std::string const & text, std::size_t length) {
    return text.size() == length &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Decimals that the prices of the candles need, two at most.
int decimalsOf(std::vector<Candle> const & candles) {
    constexpr int MOST = 2;
    int decimals = 0;
    for (Candle const & candle : candles) {
        for (double const price : {candle.open, candle.high, candle.low, candle.close}) {
            std::string const text = fixed(price, MOST);
            std::size_t const last = text.find_last_not_of('0');
            int const used = static_cast<int>(last + 1 - (text.size() - MOST));
            decimals = std::max(decimals, used);
        }
    }
    return decimals;
}

/// Writes the picture from the back to the front.
class Drawing {
public:
    explicit Drawing(CandleChart const & chart)
        : chart_(chart),
          scale_(chart.candles, PRICES, VOLUMES),
          decimals_(decimalsOf(chart.candles)) {}

    std::string text() {
        open();
        heading();
        priceGrid();
        timeGrid();
        if (chart_.candles.empty()) {
            write(PRICES.left + PRICES.width / 2, PRICES.top + PRICES.height / 2, "データなし",
                  "middle", 16, PALE_INK);
        }
        for (std::size_t i = 0; i < chart_.candles.size(); ++i) {
            candle(i);
        }
        lastPrice();
        out_ += "</svg>\n";
        return std::move(out_);
    }

private:
    void open() {
        std::string const size = "width=\"" + place(WIDTH) + "\" height=\"" + place(HEIGHT) +
                                 "\" viewBox=\"0 0 " + place(WIDTH) + ' ' + place(HEIGHT) + '"';
        out_ +=
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<svg xmlns=\"http://www.w3.org/2000/svg\" " +
            size +
            " font-family=\"'IPAPGothic','Noto Sans CJK JP','Hiragino Sans','Yu Gothic',"
            "sans-serif\">\n"
            "<title>" +
            escaped(chart_.title) + "</title>\n";
        box(0, 0, WIDTH, HEIGHT, "#ffffff", "");
    }

    void heading() {
        write(PRICES.left, 36, chart_.title, "start", 22, INK);
        write(PRICES.left, 60, chart_.note, "start", 13, PALE_INK);
        if (chart_.candles.empty()) {
            return;
        }
        auto const [low, high] = extremes();
        std::string const range = "高値 " + shownNumber(high, decimals_) + "   安値 " +
                                  shownNumber(low, decimals_) + "   " +
                                  std::to_string(chart_.candles.size()) + "本";
        write(PRICES.right(), 60, range, "end", 13, PALE_INK);
    }

    void priceGrid() {
        CandleScale::PriceMarks const marks = scale_.priceMarks(PRICE_MARKS);
        int const decimals = std::max(marks.decimals, decimals_);
        for (double const price : marks.prices) {
            double const y = scale_.yOf(price);
            line(PRICES.left, y, PRICES.right(), y, GRID, "");
            write(PRICES.right() + 8, y + LABEL_DROP, shownNumber(price, decimals), "start", 12,
                  PALE_INK);
        }
        line(VOLUMES.left, VOLUMES.bottom(), VOLUMES.right(), VOLUMES.bottom(), PALE_INK, "");
        write(VOLUMES.right() + 8, VOLUMES.top + LABEL_DROP, shownNumber(scale_.highestVolume(), 0),
              "start", 12, PALE_INK);
        write(VOLUMES.left, VOLUMES.top - 6, "出来高", "start", 12, PALE_INK);
    }

    void timeGrid() {
        std::string dateBefore;
        for (std::size_t const index : scale_.timeMarks(TIME_DISTANCE)) {
            Candle const & candle = chart_.candles[index];
            double const x = scale_.middleOf(index);
            line(x, PRICES.top, x, VOLUMES.bottom(), GRID, "");
            std::string const time = shownTime(candle.time);
            double y = VOLUMES.bottom() + 18;
            if (!time.empty()) {
                write(x, y, time, "middle", 12, PALE_INK);
                y += 16;
            }
            if (time.empty() || candle.date != dateBefore) {
                write(x, y, shownDate(candle.date), "middle", 12, PALE_INK);
            }
            dateBefore = candle.date;
        }
    }

    void candle(std::size_t index) {
        Candle const & candle = chart_.candles[index];
        char const * const colour = candle.isRising() ? RISING : FALLING;
        double const x = scale_.middleOf(index);
        double const width = std::max(scale_.bodyWidth(), THINNEST);
        double const left = x - width / 2;
        double const top = scale_.yOf(std::max(candle.open, candle.close));
        double const bottom = scale_.yOf(std::min(candle.open, candle.close));
        double const volumeTop = scale_.yOfVolume(candle.volume);

        out_ += "<g>\n<title>" + escaped(labelOf(candle)) + "</title>\n";
        box(left, volumeTop, width, VOLUMES.bottom() - volumeTop, colour, " opacity=\"0.35\"");
        line(x, scale_.yOf(candle.high), x, scale_.yOf(candle.low), colour, "");
        box(left, top, width, std::max(bottom - top, THINNEST), colour, "");
        out_ += "</g>\n";
    }

    /// Where the newest candle stands, across the whole chart.
    void lastPrice() {
        if (chart_.candles.empty()) {
            return;
        }
        Candle const & last = chart_.candles.back();
        char const * const colour = last.isRising() ? RISING : FALLING;
        double const y = scale_.yOf(last.close);
        line(PRICES.left, y, PRICES.right(), y, colour, " stroke-dasharray=\"5 4\"");
        box(PRICES.right() + 2, y - 10, WIDTH - PRICES.right() - 6, 20, colour, " rx=\"3\"");
        write(PRICES.right() + 8, y + LABEL_DROP, shownNumber(last.close, decimals_), "start", 12,
              "#ffffff");
        if (chart_.hasLive) {
            write(PRICES.right(), 36, "リアルタイム", "end", 13, colour);
        }
    }

    std::string labelOf(Candle const & candle) const {
        std::string const time = shownTime(candle.time);
        return shownDate(candle.date) + (time.empty() ? "" : " " + time) + " 始値" +
               shownNumber(candle.open, decimals_) + " 高値" + shownNumber(candle.high, decimals_) +
               " 安値" + shownNumber(candle.low, decimals_) + " 終値" +
               shownNumber(candle.close, decimals_) + " 出来高" + shownNumber(candle.volume, 0);
    }

    std::pair<double, double> extremes() const {
        double low = chart_.candles.front().low;
        double high = chart_.candles.front().high;
        for (Candle const & candle : chart_.candles) {
            low = std::min(low, candle.low);
            high = std::max(high, candle.high);
        }
        return {low, high};
    }

    void line(double x1, double y1, double x2, double y2, char const * colour, char const * more) {
        out_ += "<line x1=\"" + place(x1) + "\" y1=\"" + place(y1) + "\" x2=\"" + place(x2) +
                "\" y2=\"" + place(y2) + "\" stroke=\"" + colour + '"' + more + "/>\n";
    }

    void box(double left, double top, double width, double height, char const * colour,
             char const * more) {
        out_ += "<rect x=\"" + place(left) + "\" y=\"" + place(top) + "\" width=\"" + place(width) +
                "\" height=\"" + place(height) + "\" fill=\"" + colour + '"' + more + "/>\n";
    }

    void write(double x, double y, std::string const & text, char const * anchor, double size,
               char const * colour) {
        out_ += "<text x=\"" + place(x) + "\" y=\"" + place(y) + "\" text-anchor=\"" + anchor +
                "\" font-size=\"" + place(size) + "\" fill=\"" + colour +
                "\" xml:space=\"preserve\">" + escaped(text) + "</text>\n";
    }

    CandleChart const & chart_;
    CandleScale const scale_;
    int const decimals_;
    std::string out_;
};

}  // namespace

std::string CandleChart::toSvg() const { return Drawing(*this).text(); }

std::string shownDate(std::string const & date) {
    return isDigits(date, 8) ? date.substr(0, 4) + '/' + date.substr(4, 2) + '/' + date.substr(6, 2)
                             : date;
}

std::string shownTime(std::string const & time) {
    if (time == "000000") {
        return "";
    }
    return isDigits(time, 6) ? time.substr(0, 2) + ':' + time.substr(2, 2) : time;
}

std::string shownNumber(double number, int decimals) {
    std::string text = fixed(number, decimals);
    std::size_t const point = std::min(text.find('.'), text.size());
    std::size_t const firstDigit = text[0] == '-' ? 1 : 0;
    for (std::size_t at = point; at > firstDigit + 3;) {
        at -= 3;
        text.insert(at, 1, ',');
    }
    return text;
}

}  // namespace session
