// SPDX-License-Identifier: Apache-2.0
#include "doubles/FakeSystemBus.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace nearcast::bluez {

namespace {

constexpr const char* addressVariable = "DBUS_SYSTEM_BUS_ADDRESS";
constexpr const char* clientName = ":1.7";

std::optional<std::string> addressNow() {
    const char* const value = getenv(addressVariable);
    if (value == nullptr) return std::nullopt;
    return value;
}

int listenAt(const std::string& path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) throw std::runtime_error("too long for a socket: " + path);
    std::memcpy(address.sun_path, path.data(), path.size());
    if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) return -1;
    return listen(descriptor, SOMAXCONN) < 0 ? -1 : descriptor;
}

/// The first argument of a call, a text.
std::string argumentOf(sd_bus_message* call) {
    const char* text = "";
    return sd_bus_message_read_basic(call, 's', &text) > 0 ? text : "";
}

}  // namespace

FakeSystemBus::FakeSystemBus() : addressBefore_(addressNow()), listening_(listenAt(folder_.file("bus")), "no socket") {
    setenv(addressVariable, ("unix:path=" + folder_.file("bus")).c_str(), 1);
}

FakeSystemBus::~FakeSystemBus() {
    if (addressBefore_) {
        setenv(addressVariable, addressBefore_->c_str(), 1);
    } else {
        unsetenv(addressVariable);
    }
}

void FakeSystemBus::check(int result, const char* what) {
    if (failed(result)) throw std::system_error(-result, std::generic_category(), what);
}

MessagePointer FakeSystemBus::take(std::deque<MessagePointer>& messages) {
    if (messages.empty()) return nullptr;
    MessagePointer first = std::move(messages.front());
    messages.pop_front();
    return first;
}

bool FakeSystemBus::accept() {
    const int client = accept4(listening_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client < 0) return false;
    sd_bus* made = nullptr;
    check(sd_bus_new(&made), "a connection");
    connection_.reset(made);
    check(sd_bus_set_fd(made, client, client), "a connection");
    check(sd_bus_set_server(made, 1, sd_id128_t{{1}}), "a connection");
    check(sd_bus_start(made), "a connection");
    return true;
}

bool FakeSystemBus::serve() {
    if (hangs_) return false;
    bool any = accept();
    while (connection_) {
        sd_bus_message* raw = nullptr;
        const int result = sd_bus_process(connection_.get(), &raw);
        const MessagePointer message(raw);
        if (result == 0) break;
        any = true;
        if (failed(result)) connection_.reset();  // the client has gone
        if (message) receive(raw);
    }
    return any;
}

void FakeSystemBus::await(WakeUp& wakeUp) const {
    if (hangs_) {
        wakeUp.wait();
    } else {
        wakeUp.wait(connection_ ? sd_bus_get_fd(connection_.get()) : listening_.get());
    }
}

void FakeSystemBus::receive(sd_bus_message* message) {
    std::uint8_t type = 0;
    check(sd_bus_message_get_type(message, &type), "a message");
    const char* const to = sd_bus_message_get_destination(message);
    if (type == SD_BUS_MESSAGE_METHOD_RETURN || type == SD_BUS_MESSAGE_METHOD_ERROR) {
        replies_.emplace_back(sd_bus_message_ref(message));
    } else if (type == SD_BUS_MESSAGE_METHOD_CALL && to != nullptr) {
        if (std::string_view(to) == bus) return answerAsBus(message);
        calls_.emplace_back(sd_bus_message_ref(message));
    }
}

void FakeSystemBus::answerAsBus(sd_bus_message* call) {
    const std::string& method = asked_.emplace_back(sd_bus_message_get_member(call));
    if (ignored_.count(method) != 0) return;
    const auto refused = refused_.find(method);
    int result = 0;
    if (odd_.count(method) != 0) {
        result = sd_bus_reply_method_return(call, "u", 7);
    } else if (refused != refused_.end()) {
        result = sd_bus_reply_method_errorf(call, refused->second.c_str(), "as the test wants");
    } else {
        result = answerWell(call, method);
    }
    if (result != -ECONNRESET) check(result, "an answer");  // the client may have gone meanwhile
}

int FakeSystemBus::answerWell(sd_bus_message* call, const std::string& method) {
    if (method == "Hello") return sd_bus_reply_method_return(call, "s", clientName);
    if (method == "AddMatch") rules_.push_back(argumentOf(call));
    if (method == "NameHasOwner") {
        return sd_bus_reply_method_return(call, "b", int{argumentOf(call) == service && !owner_.empty()});
    }
    if (method == "ListActivatableNames") return answerNames(call);
    if (method != "GetNameOwner") return sd_bus_reply_method_return(call, "");
    if (argumentOf(call) == service && !owner_.empty()) return sd_bus_reply_method_return(call, "s", owner_.c_str());
    return sd_bus_reply_method_errorf(call, "org.freedesktop.DBus.Error.NameHasNoOwner", "nobody has that name");
}

int FakeSystemBus::answerNames(sd_bus_message* call) const {
    sd_bus_message* raw = nullptr;
    check(sd_bus_message_new_method_return(call, &raw), "an answer");
    const MessagePointer answer(raw);
    check(sd_bus_message_open_container(raw, 'a', "s"), "names");
    for (const std::string& name : activatable_) check(sd_bus_message_append(raw, "s", name.c_str()), "a name");
    check(sd_bus_message_close_container(raw), "names");
    return sd_bus_send(connection_.get(), raw, nullptr);
}

void FakeSystemBus::answerError(const MessagePointer& call, const char* name, const char* message) {
    check(sd_bus_reply_method_errorf(call.get(), name, "%s", message), "an answer");
}

MessagePointer FakeSystemBus::newSignal(const char* sender, const char* path, const char* interface,
                                        const char* member) const {
    sd_bus_message* raw = nullptr;
    check(sd_bus_message_new_signal(connection_.get(), &raw, path, interface, member), "a signal");
    MessagePointer message(raw);
    check(sd_bus_message_set_sender(raw, sender), "a sender");
    return message;
}

MessagePointer FakeSystemBus::newCall(const char* sender, const char* path, const char* interface,
                                      const char* member) const {
    sd_bus_message* raw = nullptr;
    check(sd_bus_message_new_method_call(connection_.get(), &raw, clientName, path, interface, member), "a call");
    MessagePointer message(raw);
    check(sd_bus_message_set_sender(raw, sender), "a sender");
    return message;
}

void FakeSystemBus::send(sd_bus_message* message, int appended) const {
    check(appended, "the contents of a message");
    std::uint64_t cookie = 0;
    check(sd_bus_send(connection_.get(), message, &cookie), "sending");
}

void FakeSystemBus::changeOwner(const char* name, const char* before, const char* after) {
    if (std::string_view(name) == service) owner_ = after;
    signal(bus, "/org/freedesktop/DBus", bus, "NameOwnerChanged", "sss", name, before, after);
}

void FakeSystemBus::say(std::string_view octets) const {
    const ssize_t sent = ::send(sd_bus_get_fd(connection_.get()), octets.data(), octets.size(), MSG_NOSIGNAL);
    check(sent == static_cast<ssize_t>(octets.size()) ? 0 : -ENOBUFS, "octets");
}

ServedSystemBus::ServedSystemBus(FakeSystemBus& bus)
    : thread_([this, &bus] {
          while (!ending_) {
              while (bus.serve()) {
              }
              bus.await(wakeUp_);
          }
      }) {}

ServedSystemBus::~ServedSystemBus() {
    ending_ = true;
    wakeUp_.wake();
    thread_.join();
}

}  // namespace nearcast::bluez
