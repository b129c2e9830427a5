// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/TemporaryFolder.h"
#include "platform/bluez/SdMessage.h"
#include "platform/system/WakeUp.h"

#include <atomic>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace nearcast::bluez {

/// A system bus in the test's own process, where DBUS_SYSTEM_BUS_ADDRESS says while it lives. The bus answers by
/// itself; what bluetoothd answers and signals, the test says. It plays one client, of sd-bus, and it never waits: the
/// thread that drives the client calls `serve` in turn.
class FakeSystemBus {
public:
    static constexpr const char* bus = "org.freedesktop.DBus";  ///< as a sender
    static constexpr const char* bluetoothd = ":1.1";           ///< its unique name

    FakeSystemBus();
    ~FakeSystemBus();
    FakeSystemBus(const FakeSystemBus&) = delete;
    FakeSystemBus& operator=(const FakeSystemBus&) = delete;

    /// Takes what the client has sent, and answers what is asked of the bus. @return whether there was anything
    bool serve();
    /// Waits until `serve` may have work, or until `wakeUp` is woken.
    void await(WakeUp& wakeUp) const;

    /// @name The bus; at its begin nobody owns org.bluez, and nobody can be started
    /// @{
    void setOwner(std::string name) { owner_ = std::move(name); }  ///< of org.bluez; empty: it has none
    void setActivatable(std::vector<std::string> names) { activatable_ = std::move(names); }
    /// Calls of this method of the bus are answered with an error.
    void refuse(const std::string& method, std::string error) { refused_[method] = std::move(error); }
    /// Calls of this method of the bus are answered with a number, which none of them promises.
    void answerOddly(const std::string& method) { odd_.insert(method); }
    /// Calls of this method of the bus are not answered.
    void ignore(const std::string& method) { ignored_.insert(method); }
    /// It takes connections, and does not say a word on them.
    void hang() { hangs_ = true; }
    /// org.bluez, or another name, changes its owner.
    void changeOwner(const char* name, const char* before, const char* after);
    /// Octets instead of a message.
    void say(std::string_view octets) const;
    void hangUp() { connection_.reset(); }
    /// @}

    /// @name What others on the bus send to the client
    /// @{
    template <class... Values>
    void signal(const char* sender, const char* path, const char* interface, const char* member, const char* types,
                Values... values) {
        const MessagePointer message = newSignal(sender, path, interface, member);
        send(message.get(), sd_bus_message_append(message.get(), types, values...));
    }
    template <class... Values>
    void call(const char* sender, const char* path, const char* interface, const char* member, const char* types,
              Values... values) {
        const MessagePointer message = newCall(sender, path, interface, member);
        send(message.get(), sd_bus_message_append(message.get(), types, values...));
    }
    template <class... Values>
    static void answer(const MessagePointer& call, const char* types, Values... values) {
        const int result = sd_bus_reply_method_return(call.get(), types, values...);
        check(result, "an answer");
    }
    static void answerError(const MessagePointer& call, const char* name, const char* message);
    /// @}

    /// @name What the client has sent
    /// @{
    [[nodiscard]] bool connected() const noexcept { return connection_ != nullptr; }
    /// The methods of the bus that it has called.
    [[nodiscard]] const std::vector<std::string>& asked() const noexcept { return asked_; }
    /// What it wants to hear, as it said.
    [[nodiscard]] const std::vector<std::string>& rules() const noexcept { return rules_; }
    /// The oldest call of bluetoothd that was not taken yet; null: there is none.
    MessagePointer takeCall() { return take(calls_); }
    /// The oldest answer to a `call` that was not taken yet; null: there is none.
    MessagePointer takeReply() { return take(replies_); }
    /// @}

private:
    static void check(int result, const char* what);
    static MessagePointer take(std::deque<MessagePointer>& messages);
    bool accept();
    void receive(sd_bus_message* message);
    void answerAsBus(sd_bus_message* call);
    int answerWell(sd_bus_message* call, const std::string& method);
    int answerNames(sd_bus_message* call) const;
    [[nodiscard]] MessagePointer newSignal(const char* sender, const char* path, const char* interface,
                                           const char* member) const;
    [[nodiscard]] MessagePointer newCall(const char* sender, const char* path, const char* interface,
                                         const char* member) const;
    void send(sd_bus_message* message, int appended) const;

    const TemporaryFolder folder_;
    const std::optional<std::string> addressBefore_;
    Descriptor listening_;
    BusPointer connection_;
    std::string owner_;
    std::vector<std::string> activatable_;
    std::map<std::string, std::string> refused_;
    std::set<std::string> odd_;
    std::set<std::string> ignored_;
    bool hangs_ = false;
    std::vector<std::string> asked_;
    std::vector<std::string> rules_;
    std::deque<MessagePointer> calls_;
    std::deque<MessagePointer> replies_;
};

/// Serves a bus on a thread of its own, for clients that wait for their answers. While it lives the bus is its.
class ServedSystemBus {
public:
    explicit ServedSystemBus(FakeSystemBus& bus);
    ~ServedSystemBus();
    ServedSystemBus(const ServedSystemBus&) = delete;
    ServedSystemBus& operator=(const ServedSystemBus&) = delete;

private:
    WakeUp wakeUp_;
    std::atomic<bool> ending_{false};
    std::thread thread_;
};

}  // namespace nearcast::bluez
