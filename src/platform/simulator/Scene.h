// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/CBCentralManager.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The simulated shop. A scene says what stands where, `Shop` lets it happen, `SimulatorRadio` lets the manager hear
/// it.
namespace nearcast::simulator {

/// A point of the floor plan in metres: x to the right, y up.
struct Place {
    double x = 0;
    double y = 0;
    friend bool operator==(const Place&, const Place&) = default;
};

/// A wall, counter or shelf: a line of points that takes `loss` dB from every path that crosses it, at each crossing.
struct Wall {
    std::string name;
    std::vector<Place> points;
    double loss = 0;  ///< dB
};

struct Floor {
    double width = 0;  ///< metres; places have x from 0 to here
    double depth = 0;  ///< metres; places have y from 0 to here
    std::vector<Wall> walls;
};

/// A place on the user's way.
struct Waypoint {
    Place at;
    double pause = 0;              ///< seconds that the user stands here
    std::optional<double> facing;  ///< degrees, 0 along x, counter-clockwise; absent: as the user came
};

/// Who carries the receiver.
struct User {
    std::vector<Waypoint> path;  ///< never empty; one place: the user stands there
    double speed = 1.2;          ///< metres per second
    bool loop = true;            ///< walk from the last place to the first and begin again, else stay at the last
    double bodyLoss = 6;         ///< dB that the body takes from a dongle right behind it
};

/// What happens to a signal between a dongle and the user. See docs/simulator.md for the formulas.
struct Air {
    double lossAtOneMetre = 54;    ///< dB, with what antennas and casings take
    double exponent = 2.0;         ///< of the log-distance loss; 2 is free space
    double placeDeviation = 2.0;   ///< dB, of the shadowing that changes with the user's place
    double placeDistance = 1.5;    ///< metres within which that shadowing is alike
    double driftDeviation = 1.5;   ///< dB, of the shadowing that changes with time
    double driftTime = 5;          ///< seconds within which it is alike
    double echo = 0.3;             ///< the strongest reflection's amplitude, as a part of the direct path's
    double jitterDeviation = 3.7;  ///< dB, of what changes from one advertisement to the next
    double loss = 0.15;            ///< probability that an advertisement is lost whatever its strength
    friend bool operator==(const Air&, const Air&) = default;
};

/// The user's radio.
struct Receiver {
    double sensitivity = -100;  ///< dBm at which every second advertisement is lost
    double channelTime = 0.1;   ///< seconds that it listens to one advertising channel before it takes the next
    double unreadable = 0;      ///< probability that a report says 127, "no reading"
};

/// What the application registers for a dongle.
struct Device {
    enum class Type { printer, drawer };

    std::string portName;
    Type type = Type::printer;
    bool withDrawer = false;
    std::optional<std::string> portSettings;
    std::optional<std::int32_t> threshold;  ///< dBm
    std::optional<std::string> nickName;
};

/// A stretch of time in seconds since the scene's start; `from` belongs to it, `to` does not.
struct Stretch {
    double from = 0;
    double to = 0;
};

struct Dongle {
    /// Where it puts its address: in the manufacturer data, in its name (beside manufacturer data of another kind), or
    /// in both.
    enum class Payload { data, name, both };

    std::string address;  ///< six octets, upper-case hexadecimal digits, colons between
    Place at;
    double txPower = 0;     ///< dBm
    double interval = 0.1;  ///< seconds; each advertisement comes a random 0 to 10 ms later than that
    Payload payload = Payload::data;
    std::vector<Stretch> off;        ///< when it is switched off
    std::optional<double> offEvery;  ///< seconds after which `off` begins again; absent: never
    std::optional<Device> device;
};

/// The radio takes a state, `at` seconds after it was opened.
struct RadioChange {
    double at = 0;
    CBManagerState state = CBManagerStatePoweredOn;
};

/// A shop with its dongles and a user who walks through it. A plain value; `readScene` makes valid ones.
struct Scene {
    std::string name;
    std::uint64_t seed = 1;          ///< of all that is left to chance, unless the radio string says another
    std::optional<double> duration;  ///< seconds after which nothing more is heard; absent: it never ends
    Floor floor;
    User user;
    Air air;
    Receiver receiver;
    std::vector<Dongle> dongles;
    std::vector<RadioChange> radio;  ///< in order of time
};

}  // namespace nearcast::simulator
