// SPDX-License-Identifier: Apache-2.0
#include "help/Suggestion.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace nearcast::cli {

namespace {

constexpr std::size_t longestWord = 64;  // what is longer is no slip of a finger, and the table would be large
constexpr std::size_t shortestBeginning = 3;

/// A third of the letters may be wrong, and one always: of a shorter word not even that much would be left.
std::size_t toleranceFor(std::string_view word) { return std::max<std::size_t>(1, word.size() / 3); }

}  // namespace

std::size_t distanceBetween(std::string_view one, std::string_view other) {
    std::vector<std::size_t> before(other.size() + 1);
    std::vector<std::size_t> above(other.size() + 1);
    std::vector<std::size_t> row(other.size() + 1);
    for (std::size_t column = 0; column <= other.size(); ++column) row[column] = column;
    for (std::size_t line = 1; line <= one.size(); ++line) {
        before = std::exchange(above, row);
        row[0] = line;
        for (std::size_t column = 1; column <= other.size(); ++column) {
            const bool same = one[line - 1] == other[column - 1];
            row[column] =
                std::min({above[column] + 1, row[column - 1] + 1, above[column - 1] + (same ? std::size_t{0} : 1)});
            const bool swapped =
                line > 1 && column > 1 && one[line - 1] == other[column - 2] && one[line - 2] == other[column - 1];
            if (swapped) row[column] = std::min(row[column], before[column - 2] + 1);
        }
    }
    return row[other.size()];
}

std::string closestWord(std::string_view typed, std::span<const std::string> words) {
    if (typed.empty() || typed.size() > longestWord) return "";
    const auto begun = std::find_if(words.begin(), words.end(), [&](const std::string& word) {
        return typed.size() >= shortestBeginning && word.starts_with(typed);
    });
    if (begun != words.end()) return *begun;
    std::string closest;
    std::size_t least = toleranceFor(typed) + 1;
    for (const std::string& word : words) {
        const std::size_t distance = distanceBetween(typed, word);
        if (distance >= std::min(least, word.size())) continue;
        least = distance;
        closest = word;
    }
    return closest;
}

}  // namespace nearcast::cli
