// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/hci/FakeController.h"
#include "platform/hci/HciPort.h"
#include "platform/radio/AdapterService.h"
#include "support/Mutex.h"

#include <functional>
#include <memory>

namespace nearcast::hci {

/// A machine with one controller that can be opened, at first hci0 with the address of `alice`, and a kernel that
/// treats it as Linux does. From any thread.
class FakeHci {
public:
    FakeHci();

    /// The machine as a radio sees it. It may outlive this.
    [[nodiscard]] std::unique_ptr<HciPort> port() const;
    /// The machine's Bluetooth service, as a radio sees it. It may outlive this.
    [[nodiscard]] std::unique_ptr<AdapterService> service() const;

    /// @name What happens to the machine
    /// @{
    void plug();                   ///< a controller, if there is none; it is there from the begin
    void unplug();                 ///< ways to it are lost
    void use(bool up);             ///< another program switches it on, or off again
    void block(HciBlock blocked);  ///< while a radio has it alone, the kernel refuses that
    void cutOff();                 ///< a switch of the machine blocks it, whoever uses it; `block({})` ends that
    void allow(Capabilities capabilities);  ///< both are there from the begin
    void breakSockets(int error);           ///< the next read of an open socket fails with this
    void number(int index);                 ///< of the controller, from its next plugging in
    /// The kernel also has this controller, which another program uses. Once for each.
    void addOther(HciAdapter adapter);
    /// A Bluetooth service runs. It switches on each controller that it gets, if it is set to, once `serve` is called.
    void runService(bool switchesOn);
    void serve();
    void link(bool linked);      ///< another device is connected by way of the controller
    void discover(bool active);  ///< by way of the service
    void failNextOpen(int error);
    void failNextQuestion(int error);  ///< about the controller
    void failWrites(int error);        ///< 0: no more
    /// @}

    /// @name What is on the air
    /// @{
    void advertise(const LegacyReport& report);
    /// Others have scans running: what is on the air comes to those who listen beside them.
    void othersScan(bool scan);
    /// Anything that a controller may send, packet indicator first.
    void send(const Octets& packet);
    /// @}

    /// Looks at the controller, or changes it.
    void controller(const std::function<void(FakeController&)>& change);
    [[nodiscard]] bool scans();
    [[nodiscard]] int count(std::uint16_t opcode);
    [[nodiscard]] bool opened() const;       ///< a socket is open
    [[nodiscard]] int opens() const;         ///< how often one was
    [[nodiscard]] bool up() const;           ///< the controller is switched on
    [[nodiscard]] int serviceAsked() const;  ///< how often the service was asked whether it switches it on
    [[nodiscard]] bool waits() const;        ///< something is to be read
    /// Returns when `condition` holds; it is asked after everything that a radio does.
    void await(const std::function<bool(FakeController&)>& condition);

    struct State;

private:
    std::shared_ptr<State> state_;
};

}  // namespace nearcast::hci
