// SPDX-License-Identifier: Apache-2.0
#include "doubles/Journal.h"

#include <nearcast/LogWriter.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace nearcast::doubles {

namespace {

/// Addresses differ from run to run.
std::string withoutPointers(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    while (!text.empty()) {
        const bool pointer = text.starts_with("0x") && !text.starts_with("0xff)");
        if (!pointer) {
            result += text.front();
            text.remove_prefix(1);
            continue;
        }
        result += "<ptr>";
        text.remove_prefix(std::min(text.find_first_not_of(digits, 2), text.size()));
    }
    return result;
}

/// "-[QXNearcastManager getRSSI:]" to "getRSSI:".
std::string_view nameIn(std::string_view method) {
    const auto space = method.find(' ');
    return space == std::string_view::npos ? method : method.substr(space + 1, method.size() - space - 2);
}

}  // namespace

Journal::~Journal() {
    if (watchesLocks_) NSLock::setObserver(nullptr);
    if (watchesTraces_) LogWriter::sharedInstance().stop();
}

void Journal::watchLocks() {
    NSLock::setObserver(this);
    watchesLocks_ = true;
}

void Journal::watchTraces() {
    LogWriter::Options options;
    options.synchronous = true;
    options.sink = [this](const LogRecord& record) {
        add("trace " + std::to_string(record.logType) + " " + std::string(nameIn(record.methodName)) + ": " +
            withoutPointers(record.anyString));
    };
    LogWriter::sharedInstance().start(std::move(options));
    watchesTraces_ = true;
}

void Journal::add(std::string line) {
    const MutexLock lock(mutex_);
    lines_.push_back(std::move(line));
}

std::vector<std::string> Journal::lines() const { return lines(""); }

std::vector<std::string> Journal::lines(std::string_view start) const {
    const MutexLock lock(mutex_);
    std::vector<std::string> result;
    std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(result),
                 [&](const std::string& line) { return line.starts_with(start); });
    return result;
}

std::size_t Journal::count(std::string_view line) const {
    const auto all = lines();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), line));
}

void Journal::clear() {
    const MutexLock lock(mutex_);
    lines_.clear();
}

void Journal::NSLog(std::string_view line) noexcept { add("console " + std::string(line)); }

void Journal::lockChanged(std::string_view name, bool held) noexcept {
    add((held ? "take " : "release ") + std::string(name));
}

void Journal::scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) {
    std::string line = services ? "central scan" : "central scan all";
    for (const CBUUID& service : services.value_or(std::vector<CBUUID>())) line += " " + service.UUIDString();
    if (!options.allowDuplicates) line += " without duplicates";
    add(line);
}

void Journal::stopAsked() { add("central stop"); }

}  // namespace nearcast::doubles
