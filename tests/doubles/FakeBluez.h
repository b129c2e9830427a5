// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/BluezReading.h"
#include "platform/bluez/SystemBus.h"
#include "platform/radio/BackOff.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace nearcast::bluez {

/// A dongle in the air of a `FakeBluez`.
struct FakeDongle {
    std::string adapter = "hci0";  ///< the one that hears it
    std::string address = "02:00:00:00:00:01";
    std::vector<std::string> services = {"4f37d906-3f43-440c-98e0-9e709971cadf"};
    std::optional<std::string> name = std::nullopt;
    std::uint16_t company = 0xFFFF;
    std::vector<std::uint8_t> octets = {2, 0, 0, 0, 0, 1};
    std::int16_t RSSI = -60;
    Time interval = std::chrono::milliseconds(100);
    bool silent = false;
    /// AD structures in place of services, name, company and octets: bluetoothd reads them itself.
    std::optional<std::vector<std::uint8_t>> data = std::nullopt;
    bool randomAddress = false;
    /// It takes scan requests: without a response the kernel waits for one until somebody else advertises.
    bool asked = false;
    std::optional<std::vector<std::uint8_t>> response = std::nullopt;  ///< AD structures, behind those of `data`
};

/// A system bus with a bluetoothd that behaves as the real one does, in a time of its own: answers take a moment,
/// discovery ends when the adapter goes off and is not resumed, devices come with their first report and go after 30
/// silent seconds, without the right filter most is kept back, with it what
/// has no reading; one device is shown under a path at a time; errors have the real names. Failures, and answers that
/// come late, are there when a test asks for them.
///
/// It plays one client: whoever connects. The listener is called from `runUntil` alone.
class FakeBluez : public SystemBus {
public:
    static constexpr Time latency = std::chrono::milliseconds(5);
    static constexpr Time silenceLimit = std::chrono::seconds(30);
    static constexpr Time strictCycle = std::chrono::milliseconds(10300);

    /// bluetoothd runs, "hci0" is there and on.
    FakeBluez();

    /// @name Time
    /// @{
    void runUntil(Time time);
    [[nodiscard]] std::optional<Time> due() const;
    [[nodiscard]] Time now() const noexcept { return now_; }
    /// Has something happen at a time.
    void at(Time time, std::function<void()> happening) { happenings_.emplace(time, std::move(happening)); }
    /// @}

    /// @name The world
    /// @{
    /// The connection breaks, and none comes about until `mendBus`.
    void breakBus(const Failure& failure);
    void mendBus() { busFailure_.reset(); }
    void startDaemon();
    /// As a crash: no signal but that its name has no owner.
    void killDaemon();
    void hang(bool hanging) { hanging_ = hanging; }  ///< it answers nothing; calls fail after ten seconds
    /// How long it takes to answer from now on.
    void answerAfter(Time duration) { latency_ = duration; }
    /// It does what this method asks for, but its answers wait for `releaseAnswers`. Whoever asked may be gone by then:
    /// an answer of a bluetoothd that died meanwhile is the bus's, that it left without replying; after a `disconnect`
    /// none comes.
    void holdAnswers(const std::string& method) { held_.insert(method); }
    /// The answer that was held for longest comes now, where one is held.
    void releaseOldestAnswer();
    /// The answers that were held come now, in their order; later ones are held no more.
    void releaseAnswers();
    void plug(const std::string& name, bool powered = true, bool monitors = false);
    /// As `plug`, of an adapter that says what it is: its address, and by its roles whether it has Low Energy.
    void plugKnown(const std::string& name, const std::string& address, bool lowEnergy = true, bool powered = true);
    void unplug(const std::string& name);
    void power(const std::string& name, bool on, PowerState state = PowerState::unknown);
    void place(FakeDongle dongle);
    /// bluetoothd shows the dongle without having heard it, as one that it knew before.
    void showUnheard(std::size_t index);
    FakeDongle& dongle(std::size_t index) { return dongles_.at(index).dongle; }
    /// The next call of that method fails.
    void failNext(const std::string& method, std::string_view error) {
        failing_[method] = {std::string(error), "asked"};
    }
    /// Every call of that method fails until nothing is said.
    void failAlways(const std::string& method, std::string_view error);
    /// Another client's discovery of duplicates runs on the adapter; the client is told of its reports too.
    void discoverForAnother(const std::string& name);
    /// It stops hearing, and does not know; a new discovery mends it.
    void stall() { stalled_ = true; }
    /// A discovery that is begun is never said to run.
    void denyDiscovering() { denies_ = true; }
    /// It hears nothing, whatever is done.
    void deafen(bool deaf) { deaf_ = deaf; }
    /// bluetoothd was starved and has missed the end of a round: it takes its discovery for running, whatever its
    /// clients do, until it is started anew, the adapter comes anew, or the kernel tells it of another end.
    void starve(const std::string& name);
    /// From now on a bluetoothd that dies leaves the kernel's round behind for so long. Another one cannot begin its
    /// own meanwhile.
    void leaveRounds(Time rest) { rest_ = rest; }
    /// Another client has ended our discovery.
    void loseDiscovery(const std::string& name);
    /// The adapter says for so long that it does not discover, though it does.
    void blink(const std::string& name, Time duration);
    void releaseMonitor();
    /// Another program speaks in bluetoothd's name.
    void forge();
    /// A controller that reports each sender once in each of its rounds, unless a monitor is registered.
    void beStrict() { strict_ = true; }
    /// The reports go on, of devices that the client has never been told of.
    void forgetToTell(bool forgetful) { forgetful_ = forgetful; }
    /// @}

    /// @name The kernel beneath, as others than bluetoothd may speak to it
    /// @{
    /// What is called when the discovery of an adapter begins and ends there.
    std::function<void(const std::string& name, bool on)> kernelDiscovers;
    /// @return the status of doc/mgmt-api.txt
    std::uint8_t startInKernel(const std::string& name);
    std::uint8_t stopInKernel(const std::string& name);
    /// How many events the controller has sent: reports, and the answers to the commands of each round.
    [[nodiscard]] std::optional<std::uint32_t> events(const std::string& name) const;
    /// @}

    /// @name What the client has done
    /// @{
    [[nodiscard]] int count(const std::string& method) const;
    [[nodiscard]] const std::vector<std::string>& calls() const noexcept { return calls_; }
    [[nodiscard]] bool discovers(const std::string& name) const;
    [[nodiscard]] bool monitored() const noexcept { return !monitored_.empty(); }
    [[nodiscard]] int connections() const noexcept { return connections_; }
    /// Reports that went to the client.
    [[nodiscard]] int reports() const noexcept { return reports_; }
    /// @}

    std::optional<Failure> connect(SystemBusListener& listener) override;
    void disconnect() override;
    void listObjects(Done done) override;
    void listDevice(std::string_view path, Done done) override;
    void setDiscoveryFilter(const std::string& adapter, Done done) override;
    void startDiscovery(const std::string& adapter, Done done) override;
    void stopDiscovery(const std::string& adapter, Done done) override;
    void registerMonitor(const std::string& adapter, Done done) override;
    void unregisterMonitor(const std::string& adapter, Done done) override;

private:
    struct Adapter {
        bool powered = true;
        bool discovering = false;  ///< as its property says
        bool ours = false;         ///< a discovery of the client runs
        bool others = false;       ///< one of another client runs
        bool filtered = false;     ///< the client's filter has been set
        bool monitors = false;
        PowerState powerState = PowerState::unknown;
        std::string address;  ///< empty: it is not said
        std::optional<bool> lowEnergy;
        bool dead = false;    ///< bluetoothd has missed the end of its discovery
        bool probed = false;  ///< somebody else's discovery runs in the kernel
        Time orphanUntil{0};  ///< when the round of a dead bluetoothd ends
        bool kernelTold = false;
        std::uint32_t events = 0;
    };
    struct Sender {
        FakeDongle dongle;
        BluezReading read = {};  ///< of what it says, where that is octets
        bool shown = false;
        Time lastHeard{0};
        Time lastReport{0};
        std::int16_t lastRSSI = 0;
    };
    using Work = std::function<std::optional<Failure>()>;

    static std::string pathOf(const std::string& name) { return "/org/bluez/" + name; }
    static std::string pathOf(const FakeDongle& dongle);
    void call(const std::string& method, Done done, Work work);
    std::optional<Failure> outcome(const std::string& method, const Work& work, int deaths);
    Adapter* find(const std::string& path);
    AdapterNews newsOf(const Adapter& adapter) const;
    void signalAdded(const std::string& path, const Adapter& adapter);
    void describe(Sender& sender, bool reading);
    [[nodiscard]] bool reaches(const Sender& sender, const Adapter& adapter) const;
    void advertise(std::size_t index);
    void hear(Sender& sender);
    void removeSilent();
    void removeDevices();
    void endDiscovery(const std::string& path, Adapter& adapter);
    bool runsInKernel(const Adapter& adapter) const;
    void endRound();
    void tellOfKernel();
    void tell(const std::function<void(SystemBusListener&)>& what);
    void signal(const std::function<void(SystemBusListener&)>& what);

    Time now_{0};
    std::multimap<Time, std::function<void()>> happenings_;
    SystemBusListener* listener_ = nullptr;
    int connections_ = 0;
    std::optional<Failure> busFailure_;
    bool daemon_ = true;
    Time rest_{0};    ///< of a round, that a bluetoothd leaves when it dies
    int deaths_ = 0;  ///< of bluetoothd: which one took a call
    Time latency_ = latency;
    std::set<std::string> held_;  ///< methods whose answers wait
    std::deque<std::function<void()>> heldAnswers_;
    bool hanging_ = false;
    std::map<std::string, Adapter> adapters_;  ///< by path
    std::vector<Sender> dongles_;
    std::map<std::string, Failure> failing_;
    std::map<std::string, Failure> alwaysFailing_;
    std::string monitored_;
    bool stalled_ = false;
    bool denies_ = false;
    bool deaf_ = false;
    bool strict_ = false;
    bool forgetful_ = false;
    bool duplicatesDropped_ = false;
    std::optional<std::size_t> waiting_;  ///< the kernel waits for the scan response of this one
    Time round_{0};
    std::vector<std::string> calls_;
    int reports_ = 0;
    DeviceNews news_;
};

}  // namespace nearcast::bluez
