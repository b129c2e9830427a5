// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::doubles {

using Json = nlohmann::json;

/// The world of the model manager: a clock, timers, the lines of a scenario, and the list of what was shown.
///
/// Slow and plain on purpose. It shares no code with the library.
class ModelWorld {
public:
    /// @param perform makes one line happen
    ModelWorld(const std::vector<std::string>& lines, std::function<void(const Json& line)> perform);

    void runAllLines();
    void sleep(std::int64_t microseconds);
    [[nodiscard]] std::int64_t now() const { return now_; }

    /// @return a number for `cancel`
    int startTimer(std::int64_t period, std::function<void()> handler);
    void cancel(int timer);

    /// Adds an event; `at` and `event` are put in.
    void show(std::string_view event, Json members);
    void showLock(std::string_view name, bool held) { show("lock", {{"name", name}, {"held", held}}); }
    [[nodiscard]] const std::vector<Json>& events() const { return events_; }

private:
    struct Line {
        std::int64_t at;
        Json fields;
    };
    struct Timer {
        int number;
        std::int64_t due;
        std::int64_t period;
        std::function<void()> handler;
    };

    /// Lets the next thing happen that is due until `limit`, a timer or a line. @return false when there is none
    bool nextThing(std::int64_t limit);
    std::vector<Timer>::iterator nextTimer();

    std::vector<Line> lines_;
    std::size_t nextLine_ = 0;
    std::function<void(const Json& line)> perform_;
    std::int64_t now_ = 0;
    std::vector<Timer> timers_;
    int timersMade_ = 0;
    std::vector<Json> events_;
};

/// The records of one operation, and its lock scopes.
class ModelOperation {
public:
    enum class Audience { application, internal };

    ModelOperation(ModelWorld& world, std::string_view name, Audience audience)
        : world_(world), method_("-[QXNearcastManager " + std::string(name) + "]"), audience_(audience) {}

    /// A text of null is one that nobody prescribes.
    void start(const Json& text) { record(audience_ == Audience::application ? 0 : 2, text); }
    void end(const Json& text) { record(audience_ == Audience::application ? 1 : 3, text); }
    void process(const Json& text) { record(6, text); }
    void error(const Json& text) { record(7, text); }

private:
    void record(int type, const Json& text) {
        world_.show("trace", {{"type", type}, {"method", method_}, {"text", text}});
    }

    ModelWorld& world_;
    std::string method_;
    Audience audience_;
};

/// Holds a named lock for a scope.
class ModelLock {
public:
    ModelLock(ModelWorld& world, std::string_view name) : world_(world), name_(name) { world_.showLock(name_, true); }
    ~ModelLock() { world_.showLock(name_, false); }
    ModelLock(const ModelLock&) = delete;
    ModelLock& operator=(const ModelLock&) = delete;

private:
    ModelWorld& world_;
    std::string_view name_;
};

}  // namespace nearcast::doubles
