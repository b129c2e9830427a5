// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Chart.h"

#include "common/Words.h"
#include "evaluate/Table.h"

#include <algorithm>
#include <cmath>

namespace nearcast::cli {

namespace {

// In the units of the picture, which grows and shrinks with the page.
constexpr double width = 560;
constexpr double height = 380;
constexpr double left = 52;
constexpr double right = 120;  // for names of points far to the right
constexpr double top = 16;
constexpr double bottom = 46;
constexpr double lineHeight = 13;

/// The values of an axis and where they lie on it.
struct Axis {
    double from = 0;
    double to = 1;
    double step = 1;
    double begin = 0;  ///< where `from` lies
    double end = 1;

    [[nodiscard]] double at(double value) const { return begin + (value - from) / (to - from) * (end - begin); }
};

/// 1, 2 or 5 times a power of ten, so that a span has some five steps.
double stepFor(double span) {
    constexpr double steps = 5;
    const double power = std::pow(10, std::floor(std::log10(span / steps)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power * steps >= span) return factor * power;
    }
    return 10 * power;
}

Axis axisFor(std::vector<double> values, double begin, double end) {
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    Axis axis;
    axis.step = stepFor(std::max(*most - *least, 0.1));
    axis.from = std::floor(*least / axis.step) * axis.step;
    axis.to = std::max(std::ceil(*most / axis.step), std::floor(*least / axis.step) + 1) * axis.step;
    axis.begin = begin;
    axis.end = end;
    return axis;
}

std::string number(double value) { return decimals(value, 1); }

/// An element with its attributes, each given as "name", "value".
std::string open(const std::string& name, std::initializer_list<std::pair<const char*, std::string>> attributes) {
    std::string text = "<" + name;
    for (const auto& [key, value] : attributes) {
        if (!value.empty()) text.append(" ").append(key).append("=\"").append(value).append("\"");
    }
    return text + ">";
}

std::string textAt(double x, double y, const char* anchor, const char* kind, const std::string& text) {
    return open("text", {{"x", number(x)}, {"y", number(y)}, {"text-anchor", anchor}, {"class", kind}}) +
           escaped(text) + "</text>\n";
}

std::string lineFrom(double x, double y, double toX, double toY) {
    return open("line",
                {{"x1", number(x)}, {"y1", number(y)}, {"x2", number(toX)}, {"y2", number(toY)}, {"class", "grid"}}) +
           "</line>\n";
}

std::string kindOf(const char* part, const ChartSeries& series) {
    return std::string(part) + (series.emphasised ? " main" : "");
}

/// From blue to red; how light it is, the page decides.
std::string styleOf(const ChartSeries& series) {
    if (!series.shade) return "";
    constexpr double blue = 215;
    constexpr double red = 365;
    return "--main: hsl(" + number(blue + *series.shade * (red - blue)) + " 75% var(--light))";
}

/// Draws one chart.
class Drawing {
public:
    explicit Drawing(const Chart& chart) : chart_(chart) {
        std::vector<double> xs{0};
        std::vector<double> ys;
        for (const ChartSeries& series : chart.series) {
            for (const ChartPoint& point : series.points) {
                xs.push_back(point.x);
                ys.push_back(point.y);
            }
        }
        empty_ = ys.empty();
        if (empty_) return;
        x_ = axisFor(std::move(xs), left, width - right);
        y_ = axisFor(std::move(ys), height - bottom, top);
    }

    std::string text() {
        if (empty_) return "";
        std::string text = "<svg viewBox=\"0 0 " + shortest(width) + " " + shortest(height) +
                           "\" role=\"group\" aria-label=\"" + escaped(chart_.title) + "\">\n";
        text += axes();
        for (const ChartSeries& series : chart_.series) text += path(series);
        for (const ChartSeries& series : chart_.series) text += marks(series);
        keepMarksFree();
        for (const ChartSeries& series : chart_.series) text += name(series);
        return text + "</svg>\n";
    }

private:
    [[nodiscard]] std::string axes() const {
        std::string text;
        constexpr double half = 0.5;  // so that the last step is not lost to rounding
        for (double value = x_.from; value < x_.to + half * x_.step; value += x_.step) {
            text += lineFrom(x_.at(value), y_.begin, x_.at(value), y_.end);
            text += textAt(x_.at(value), y_.begin + lineHeight + 3, "middle", "tick", shortest(value));
        }
        for (double value = y_.from; value < y_.to + half * y_.step; value += y_.step) {
            text += lineFrom(x_.begin, y_.at(value), x_.end, y_.at(value));
            text += textAt(x_.begin - 6, y_.at(value) + 4, "end", "tick", shortest(value));
        }
        text += textAt((x_.begin + x_.end) / 2, height - 8, "middle", "axis", chart_.xName);
        const std::string turned = "rotate(-90 14 " + number((y_.begin + y_.end) / 2) + ")";
        return text +
               open("text", {{"x", "14"},
                             {"y", number((y_.begin + y_.end) / 2)},
                             {"text-anchor", "middle"},
                             {"class", "axis"},
                             {"transform", turned}}) +
               escaped(chart_.yName) + "</text>\n";
    }

    [[nodiscard]] std::string path(const ChartSeries& series) const {
        if (!series.line) return "";
        std::string points;
        for (const ChartPoint& point : series.points) {
            points += number(x_.at(point.x)) + "," + number(y_.at(point.y)) + " ";
        }
        return open("polyline", {{"points", points}, {"class", kindOf("curve", series)}, {"style", styleOf(series)}}) +
               "</polyline>\n";
    }

    [[nodiscard]] std::string marks(const ChartSeries& series) const {
        std::string text;
        for (const ChartPoint& point : series.points) {
            text += open("circle", {{"cx", number(x_.at(point.x))},
                                    {"cy", number(y_.at(point.y))},
                                    {"r", series.line ? "3.5" : "5"},
                                    {"class", kindOf("mark", series)},
                                    {"style", styleOf(series)},
                                    {"tabindex", "0"},
                                    {"role", "img"},
                                    {"aria-label", escaped(point.tip)}}) +
                    "<title>" + escaped(point.tip) + "</title></circle>\n";
        }
        return text;
    }

    void keepMarksFree() {
        constexpr double radius = 5;
        for (const ChartSeries& series : chart_.series) {
            for (const ChartPoint& point : series.points) {
                taken_.push_back({x_.at(point.x) - radius, y_.at(point.y) + radius - 1, 2 * radius});
            }
        }
    }

    /// The name beside the last point, moved down as long as something is in the way.
    std::string name(const ChartSeries& series) {
        if (series.points.empty() || series.shade) return "";
        const double x = x_.at(series.points.back().x) + 9;
        double y = y_.at(series.points.back().y) + 4;
        constexpr double letter = 6.2;
        const double length = letter * static_cast<double>(series.name.size());
        const auto inTheWay = [&](const Box& box) {
            return x < box.x + box.length && box.x < x + length && std::abs(y - box.y) < lineHeight;
        };
        while (std::any_of(taken_.begin(), taken_.end(), inTheWay)) y += lineHeight / 2;
        taken_.push_back({x, y, length});
        return textAt(x, y, "start", series.emphasised ? "name main" : "name", series.name);
    }

    struct Box {
        double x;
        double y;
        double length;
    };

    const Chart& chart_;
    bool empty_ = true;
    Axis x_;
    Axis y_;
    std::vector<Box> taken_;
};

}  // namespace

std::string escaped(const std::string& text) {
    std::string result;
    for (const char letter : printable(text)) {
        switch (letter) {
            case '&': result += "&amp;"; break;
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            case '"': result += "&quot;"; break;
            default: result += letter;
        }
    }
    return result;
}

std::vector<std::string> dropFar(Chart& chart) {
    constexpr double wider = 2.5;  // times as far along x as what is emphasised
    constexpr double lower = 15;   // below it
    double mostX = 0;
    double leastY = 0;
    bool known = false;
    for (const ChartSeries& series : chart.series) {
        if (!series.emphasised) continue;
        for (const ChartPoint& point : series.points) {
            mostX = std::max(mostX, point.x);
            leastY = known ? std::min(leastY, point.y) : point.y;
            known = true;
        }
    }
    std::vector<std::string> dropped;
    const auto far = [&](const ChartSeries& series) {
        const auto tooFar = [&](const ChartPoint& point) {
            return point.x > wider * mostX || point.y < leastY - lower;
        };
        if (series.emphasised || std::none_of(series.points.begin(), series.points.end(), tooFar)) return false;
        dropped.push_back(series.name);
        return true;
    };
    if (known) chart.series.erase(std::remove_if(chart.series.begin(), chart.series.end(), far), chart.series.end());
    return dropped;
}

std::string legendOf(const Chart& chart) {
    constexpr std::size_t most = 12;
    std::vector<const ChartSeries*> shades;
    for (const ChartSeries& series : chart.series) {
        if (series.shade) shades.push_back(&series);
    }
    std::string text;
    for (std::size_t place = 0; place < shades.size(); ++place) {
        // Of very many the first and the last say what lies between.
        if (shades.size() > most && place != 0 && place + 1 != shades.size()) continue;
        text += "<li style=\"" + styleOf(*shades[place]) + "\">" + escaped(shades[place]->name) + "</li>";
    }
    return text.empty() ? "" : "<ul class=\"legend\">" + text + "</ul>\n";
}

std::string SVGOf(const Chart& chart) { return Drawing(chart).text(); }

}  // namespace nearcast::cli
