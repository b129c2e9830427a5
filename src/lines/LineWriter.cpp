// SPDX-License-Identifier: Apache-2.0
#include "lines/Line.h"

#include "lines/Text.h"
#include "platform/json/JSONSerialization.h"

#include <stdexcept>

namespace nearcast::lines {

namespace {

struct WriteAction {
    std::string& out;

    void operator()(const Advertise& action) const {
        out += R"("advertise", "name": )";
        if (action.name) {
            appendQuoted(out, *action.name);
        } else {
            out += "null";
        }
        out += R"(, "manufacturerData": )";
        if (action.manufacturerData) {
            appendHexadecimal(out, *action.manufacturerData);
        } else {
            out += "null";
        }
        out += R"(, "RSSI": )" + std::to_string(action.RSSI);
        if (action.services) appendList(out += R"(, "services": )", *action.services);
    }
    void operator()(const RadioState& action) const { out += R"("radio", "state": )" + std::to_string(action.state); }
    void operator()(const End& /*action*/) const { out += R"("end")"; }
    template <class Other>
    void operator()(const Other& /*action*/) const {
        throw std::logic_error("recordings hold advertisements and radio states alone");
    }
};

}  // namespace

std::string writeLine(const Line& line) {
    std::string out = R"({"at": )";
    appendSeconds(out, line.at);
    out += R"(, "do": )";
    std::visit(WriteAction{out}, line.action);
    return out + "}";
}

}  // namespace nearcast::lines
