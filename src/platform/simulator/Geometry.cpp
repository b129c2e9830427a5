// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/Geometry.h"

#include <cmath>

namespace nearcast::simulator {

namespace {

/// More than 0 where `point` lies to the left of the line from `from` to `to`, 0 on it.
double side(const Place& from, const Place& to, const Place& point) {
    return (to.x - from.x) * (point.y - from.y) - (to.y - from.y) * (point.x - from.x);
}

/// Whether two points lie on different sides of a line. A point on the line counts to its left, so that of two pieces
/// that meet on the line one crosses or none does, never both.
bool separates(const Place& from, const Place& to, const Place& one, const Place& other) {
    return (side(from, to, one) >= 0) != (side(from, to, other) >= 0);
}

}  // namespace

double distance(const Place& one, const Place& other) { return std::hypot(other.x - one.x, other.y - one.y); }

double direction(const Place& from, const Place& to) { return std::atan2(to.y - from.y, to.x - from.x); }

Place between(const Place& from, const Place& to, double part) {
    return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
}

int crossings(const Wall& wall, const Place& from, const Place& to) {
    int count = 0;
    for (std::size_t index = 1; index < wall.points.size(); ++index) {
        const Place& begin = wall.points[index - 1];
        const Place& end = wall.points[index];
        if (separates(from, to, begin, end) && separates(begin, end, from, to)) ++count;
    }
    return count;
}

double wallLoss(const Floor& floor, const Place& from, const Place& to) {
    double loss = 0;
    for (const Wall& wall : floor.walls) loss += wall.loss * crossings(wall, from, to);
    return loss;
}

}  // namespace nearcast::simulator
