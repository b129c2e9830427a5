// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
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
    /// Its place among curves of one family, from 0 to 1: they have shades and a legend, not names beside them.
    std::optional<double> shade{};
};

/// What a chart shows.
struct Chart {
    std::string title;
    std::string xName;
    std::string yName;
    std::vector<ChartSeries> series;
};

/// Takes away what is there for comparison but so far from all that is emphasised that it would leave no room to see
/// that. Where nothing is emphasised, everything stays.
/// @return the names of what was taken away
std::vector<std::string> dropFar(Chart& chart);

/// A text as it may stand in HTML and in its attributes.
std::string escaped(const std::string& text);

/// The chart as an SVG element, whose colours the page's style gives. Points can be reached by the keyboard. Empty
/// where there is no point.
std::string SVGOf(const Chart& chart);
/// What the shades mean, as HTML; empty where there are none.
std::string legendOf(const Chart& chart);

}  // namespace nearcast::cli
