// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>
#include <nearcast/HeardAdvertisement.h>
#include <nearcast/NearestSettings.h>
#include <nearcast/QXNearcastManager.h>
#include <nearcast/RadioHealth.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast {

/// Which rule made, or keeps, a choice.
enum class NearestRule {
    noneInside,  ///< no device is inside its action area
    entered,     ///< nobody was chosen, and this is the strongest of the devices inside their areas
    led,         ///< its lead over the device that was chosen before has added up to the patience
    left,        ///< the device chosen before has left its area
    silent,      ///< the dongle of the device chosen before has fallen silent
    blind,       ///< the radio could not hear for too long
    removed,     ///< the device chosen before is not registered any more
};

/// The rule's name: "none inside", "entered", "led", "left", "silent", "blind", "removed".
NEARCAST_EXPORT std::string_view nameOf(NearestRule rule) noexcept;

/// A device in an answer of `Nearest`.
struct NearestCandidate {
    std::string portName;  ///< as registered
    std::string MACAddr;   ///< of its dongle, as registered
    double signal = 0;     ///< its level in dBm
    double threshold = 0;  ///< of its action area, in dBm
};

/// What is chosen at a moment, and why.
struct NEARCAST_EXPORT NearestChoice {
    std::optional<NearestCandidate> device;      ///< nothing: the user stands next to none
    NearestRule rule = NearestRule::noneInside;  ///< what made this choice
    std::optional<NearestCandidate> runnerUp;    ///< the strongest of the others inside their areas
    /// The chosen device's signal minus the runner-up's, in dB; less than 0 while a lead adds up. Only where there are
    /// both.
    std::optional<double> distance;
    /// The radio cannot hear, or has not heard this device since it can again: the choice is the last known one.
    bool stale = false;
    double since = 0;  ///< when the device was chosen, in seconds of the clock

    /// One line for people: "BT:Bar at -58 dBm (threshold -65), 6 dB before BT:Kitchen: entered".
    [[nodiscard]] std::string text() const;
};

/// A change of the choice: of its device, or of whether it is stale.
struct NearestChange {
    NearestChoice before;  ///< the change
    NearestChoice now;     ///< after it
    double at = 0;         ///< seconds of the clock
};

/// What `Nearest` knows of one registered device.
struct NearestExplanation {
    std::string portName;                  ///< as registered
    std::string MACAddr;                   ///< of its dongle, as registered
    std::optional<std::int32_t> raw;       ///< the last raw reading in dBm; only with a tap
    std::optional<std::int32_t> smoothed;  ///< the manager's last report in dBm
    std::optional<double> level;           ///< what the decision compares, in dBm
    double threshold = 0;                  ///< in dBm
    bool chosen = false;                   ///< the user stands next to it
    std::string met;                       ///< what speaks for it: "inside for 3.5 s, leads by 4 dB (2.5 of 6 dB s)"
    std::string missing;  ///< what it lacks to be chosen: "7 dB to its threshold"; empty for the chosen one
};

/// Decides which registered device the user stands next to.
///
/// It is a delegate of the manager, and hands everything on to the application's own. Of a device it needs the record
/// in the registry: "MAC Address" and, where it has one, "Threshold RSSI". A device is inside its action area when its
/// signal has been above the threshold for the dwell time, and outside when it has been below by the hysteresis. Among
/// those inside, the choice moves when another's lead adds up to the patience. A dongle that falls silent leaves at
/// once; a weaker one takes its place only after the time of silence again, for lost packets look like silence. While
/// the radio cannot hear, the choice is kept and marked as stale.
///
/// With a tap it hears the raw readings too and decides by them, which is quicker and surer than by the smoothed
/// reports, and works where dongles send less than once a second.
///
/// @code
/// auto nearest = std::make_shared<nearcast::Nearest>(manager, [](const nearcast::NearestChange& change) {
///     std::cout << change.now.text() << '\n';
/// });
/// manager.setDelegate(nearest);
/// nearcast::Platform::setTap(nearest->tap());
/// @endcode
///
/// Time passes by its events. Where nothing is heard at all no event comes: call `update` twice a second or so, from
/// any thread, so that a choice also ends in time then.
///
/// Every operation may be called from any thread. Make it with `std::make_shared`, and keep it as long as the manager
/// may call it. The cost of a report does not depend on the number of devices.
class NEARCAST_EXPORT Nearest : public QXNearcastManagerDelegate {
public:
    /// Called after each change, one call at a time and in order, on the thread that brought the change about (the
    /// radio's, the timers', or one that calls `update`), with no lock held: anything may be called from inside but,
    /// after the change of a silent dongle, `QXNearcastManager::getRSSI`, as in `didUpdateState`. What it throws passes
    /// to whoever called.
    using Changed = std::function<void(const NearestChange& change)>;
    /// Seconds from an arbitrary start that never go back.
    using Clock = std::function<double()>;
    /// How the radio is.
    using Health = std::function<RadioHealth()>;
    /// The devices.
    using Registry = std::function<std::shared_ptr<const Settings>()>;

    /// What it stands on, where that is not the manager and the platform.
    struct Sources {
        Registry registry;  ///< read again when a report does not fit what was read, and by `refresh`
        Clock clock;        ///< `Platform::now`
        Health health;      ///< `Platform::radioHealth`
    };

    /// @param manager whose registry it reads
    /// @throws std::invalid_argument as `NearestSettings::validate`
    Nearest(QXNearcastManager& manager, Changed changed, const NearestSettings& settings = {});
    /// @param sources all three
    /// @throws std::invalid_argument as `NearestSettings::validate`, or for a source that is missing
    Nearest(const Sources& sources, Changed changed, const NearestSettings& settings = {});
    ~Nearest();
    Nearest(const Nearest&) = delete;
    Nearest& operator=(const Nearest&) = delete;

    /// Sets the application's own delegate, to which everything is handed on after it was looked at; or none.
    void setNext(std::shared_ptr<QXNearcastManagerDelegate> next);

    /// What to give to `Platform::setTap`. It does not keep this object alive, and does nothing once it is gone.
    [[nodiscard]] std::function<void(const HeardAdvertisement& heard)> tap();

    /// Reads the registry again; call it after devices were given other thresholds. A device that was registered,
    /// removed or renamed is noticed by its next report, at most once a second.
    void refresh();
    /// Lets time pass: silence, staleness and the end of a dwell time are noticed now. Also asks how the radio is.
    void update();

    /// The choice at this moment.
    [[nodiscard]] NearestChoice choice();
    /// For every registered device, in the registry's order, what is known of it and why it is chosen or not.
    [[nodiscard]] std::vector<NearestExplanation> explain();
    /// As they were given.
    [[nodiscard]] const NearestSettings& settings() const noexcept;

private:
    class Engine;
    std::shared_ptr<Engine> engine_;
};

}  // namespace nearcast
