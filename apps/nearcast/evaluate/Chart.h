// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace nearcast::cli {

/// A point of a chart.
struct ChartPoint {
    double x = 0;
    double y = 0;
    std::string tip;  ///< what is told of it when it is pointed at
};

/// Points that belong together.
struct ChartSeries {
    std::string name;
    bool line = false;        ///< joined, in their order
    bool emphasised = false;  ///< what the page is about; the others are there for comparison
    std::vector<ChartPoint> points;
};

/// What a chart shows.
struct Chart {
    std::string title;
    std::string xName;
    std::string yName;
    std::vector<ChartSeries> series;
};

/// A text as it may stand in HTML and in its attributes.
std::string escaped(const std::string& text);

/// The chart as an SVG element, whose colours the page's style gives. Points can be reached by the keyboard. Empty
/// where there is no point.
std::string SVGOf(const Chart& chart);

}  // namespace nearcast::cli
