// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

namespace nearcast::lab {

/// The strength of one dongle, computed from its readings. Times are in seconds and never fall, signals in dBm. One
/// thread.
class Level {
public:
    virtual ~Level() = default;
    Level() = default;
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

    virtual void add(double at, std::int32_t RSSI) = 0;
    /// Nothing if no reading counts at that time.
    virtual std::optional<double> value(double at) = 0;
};

/// The latest reading.
class LatestLevel : public Level {
public:
    void add(double at, std::int32_t RSSI) override;
    std::optional<double> value(double at) override;

private:
    std::optional<double> value_;
};

/// The last seven readings, or as many as there are; a subclass computes the level.
class SevenReadings : public Level {
public:
    static constexpr std::size_t most = 7;

    void add(double at, std::int32_t RSSI) final;
    std::optional<double> value(double at) final;

private:
    /// @param readings at least one, in any order; may be modified
    virtual double of(std::int32_t* readings, std::size_t count) = 0;

    std::array<std::int32_t, most> readings_{};
    std::size_t count_ = 0;
    std::size_t next_ = 0;
};

/// The strongest of the last seven readings.
class MaximumLevel : public SevenReadings {
    double of(std::int32_t* readings, std::size_t count) override;
};

/// The middle one of the last seven readings; between the two in the middle where their number is even.
class MedianLevel : public SevenReadings {
    double of(std::int32_t* readings, std::size_t count) override;
};

/// The mean of the readings of the last 20 seconds, without the strongest and the weakest fifth of them (each rounded
/// down).
class TrimmedMeanLevel : public Level {
public:
    static constexpr double window = 20;  ///< seconds; older readings do not count
    /// The most readings kept; the oldest are dropped first.
    static constexpr std::size_t most = 4096;

    void add(double at, std::int32_t RSSI) override;
    std::optional<double> value(double at) override;

private:
    struct Reading {
        double at;
        std::int32_t RSSI;
    };
    std::deque<Reading> readings_;
};

/// The first reading, moved by a tenth of the difference with each later one.
class ExponentialLevel : public Level {
public:
    static constexpr double weight = 0.1;

    void add(double at, std::int32_t RSSI) override;
    std::optional<double> value(double at) override;

private:
    std::optional<double> value_;
};

/// A Kalman filter of one dimension: the signal is taken to stay where it is but for a random walk, and each reading
/// to be the signal with noise on it.
class KalmanLevel : public Level {
public:
    struct Noise {
        double process;      ///< variance that the signal gains, in dB² a second
        double measurement;  ///< variance of a reading, in dB²
    };
    /// For a signal that moves by 2 dB in a second, in readings that vary by 4 dB.
    static constexpr Noise quick{4, 16};
    /// For a signal that moves by half a decibel in a second, in readings that vary by 6 dB.
    static constexpr Noise calm{0.25, 36};

    explicit KalmanLevel(Noise noise) : noise_(noise) {}

    void add(double at, std::int32_t RSSI) override;
    std::optional<double> value(double at) override;

private:
    Noise noise_;
    std::optional<double> value_;
    double variance_ = 0;  ///< of the value
    double at_ = 0;        ///< of the last reading
};

}  // namespace nearcast::lab
