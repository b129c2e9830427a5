// SPDX-License-Identifier: Apache-2.0
#include "scenario/BlobGenerator.h"

#include <cstdio>
#include <limits>

namespace nearcast::scenario {

namespace {

using Json = nlohmann::json;

constexpr const char* portNames[] = {"BT:Front", "BT:Back",    "Drawer",      "Küche",     "",
                                     "<ptr>",    "0x1f, -> 1", "a\"b\\c\n\t", "🖨 eins", "TCP:192.168.0.7"};
constexpr const char* addresses[] = {"00:11:22:AA:BB:CC",
                                     "0A:0B:0C:0D:0E:0F",
                                     "DE:AD:BE:EF:00:01",
                                     "00:11:22:aa:bb:cc",
                                     "02:1A:2B:3C:4D:5E",
                                     "ZZ",
                                     "Thermo",
                                     "(null):(null):(null):(null):(null):(null)",
                                     "é:à:ü:ß:ø:å",
                                     ""};
constexpr const char* texts[] = {
    "",       "mini", "Theke 1", "ünïcödé", "\x01\x1f", "\xF0\x9F\x98\x80", "\xC2\x80", "/path\\with\"quotes\"",
    "(null)", "%@ %p"};

constexpr const char* oddBlobs[] = {
    "garbage",
    "",
    " ",
    "\n",
    "{",
    "}",
    "[",
    "{\"a\"",
    "{\"a\":",
    "{\"a\":{}",
    "{\"a\":{},}",
    "{,}",
    "[1,]",
    "{\"a\":{}}x",
    "{\"a\":{}} {}",
    "// no\n{}",
    "{}/*no*/",
    "{'a':{}}",
    "{a:{}}",
    "\xEF\xBB\xBF{}",
    "\xEF\xBB\xBF",
    "\xEF\xBB{}",
    "{}\xEF\xBB\xBF",
    "\xEF\xBB\xBF\xEF\xBB\xBF{}",
    "null",
    "true",
    "\"text\"",
    "7",
    "-0",
    "[]",
    "[{}]",
    "nul",
    "NaN",
    "Infinity",
    "-",
    "+1",
    "01",
    "1.",
    ".5",
    "1e",
    "1e5",
    "{\"a\":null}",
    "{\"a\":7}",
    "{\"a\":{\"Device Type\":1}}",
    "{\"a\":{\"Device Type\":null}}",
    "{\"a\":{\"Device Type\":\"PRINTER\"}}",
    "{\"a\":{\"n\":1e999}}",
    "{\"a\":{\"n\":-1e999}}",
    "{\"a\":{\"n\":1e-999}}",
    "{\"a\":{\"n\":0e999}}",
    "{\"a\":{\"n\":\"\\ud800\"}}",
    "{\"a\":{\"n\":\"\\udc00\"}}",
    "{\"a\":{\"n\":\"\\ud800\\u0041\"}}",
    "{\"a\":{\"n\":\"\\ud83d\\ude00\"}}",
    "{\"a\":{\"n\":\"\\u0000\"}}",
    "{\"\\u0000\":{}}",
    "{\"a\":{\"n\":\"\t\"}}",
    "{\"a\":{\"n\":\"\\x41\"}}",
    "{\"a\":{\"n\":\"\xff\"}}",
    "{\"a\":{\"n\":\"\xed\xa0\x80\"}}",
    "{\"a\":{\"n\":\"\xc0\xaf\"}}",
    "{\"a\":{\"n\":\"\xf4\x90\x80\x80\"}}",
    "{\"\xff\":{}}",
    "{\"a\":{\"k\":1,\"k\":2}}",
    "{\"a\":{\"x\":1},\"a\":{\"y\":2}}",
    "{\"a\":7,\"a\":{}}",
    "{\"a\":{\"Device Type\":\"Printer\",\"Device Type\":\"TF-Tillfox\"}}",
    "{\"a\":{\"n\":[9223372036854775807,18446744073709551615,-9223372036854775808]}}",
    "{\"a\":{\"n\":[18446744073709551616,-9223372036854775809]}}",
};

}  // namespace

std::string BlobGenerator::portName() { return random_.pick(portNames); }

std::string BlobGenerator::address() { return random_.pick(addresses); }

std::string BlobGenerator::text() { return random_.pick(texts); }

nlohmann::json BlobGenerator::number() {
    constexpr double floats[] = {0.5, -65.9, 1e300, -1e-300, 3.0, 1.0, 0.1, 4294967296.5};
    constexpr std::int64_t integers[] = {0,
                                         1,
                                         3,
                                         -65,
                                         2147483647,
                                         -2147483648LL,
                                         std::numeric_limits<std::int64_t>::min(),
                                         std::numeric_limits<std::int64_t>::max()};
    if (random_.oneIn(8)) return std::numeric_limits<std::uint64_t>::max() - random_.below(2);
    if (random_.oneIn(3)) return random_.pick(floats);
    return random_.pick(integers);
}

nlohmann::json BlobGenerator::value(int depth) {
    switch (random_.below(depth > 3 ? 4 : 6)) {
        case 0: return nullptr;
        case 1: return random_.oneIn(2);
        case 2: return number();
        case 3: return text();
        case 4: {
            Json list = Json::array();
            while (!random_.oneIn(3)) list.push_back(value(depth + 1));
            return list;
        }
        default: {
            Json members = Json::object();
            while (!random_.oneIn(3)) members[text()] = value(depth + 1);
            return members;
        }
    }
}

nlohmann::json BlobGenerator::deviceType(bool saved) {
    constexpr const char* words[] = {"Printer", "TF-Tillfox", "printer", "Desktop", ""};
    if (saved) return random_.pick(words);
    if (random_.oneIn(3)) return value(3);
    if (random_.oneIn(4)) return std::to_string(random_.below(5)) + " ";
    return random_.between(-1, 4);
}

nlohmann::json BlobGenerator::record(bool saved, const std::string& address) {
    Json record = Json::object();
    if (!random_.oneIn(6)) record["MAC Address"] = address;
    if (!random_.oneIn(6)) record["Device Type"] = deviceType(saved);
    if (random_.oneIn(2)) record["With Drawer"] = random_.oneIn(2);
    if (random_.oneIn(2)) record["Nick Name"] = text();
    if (random_.oneIn(3)) record["Threshold RSSI"] = random_.between(-100, 0);
    if (random_.oneIn(3)) record["Port Settings"] = text();
    while (random_.oneIn(3)) record[text() + "+"] = value(0);
    return record;
}

nlohmann::json BlobGenerator::registry(bool saved) {
    Json registry = Json::object();
    std::size_t next = random_.below(std::size(addresses));
    while (!random_.oneIn(4) && registry.size() < std::size(addresses)) {
        const std::string name = portName();
        registry[name] = record(saved, addresses[next++ % std::size(addresses)]);
    }
    return registry;
}

void BlobGenerator::space(std::string& out) {
    constexpr const char* spaces[] = {"", "", "", " ", "\n", "\t", "\r\n", "   "};
    out += random_.pick(spaces);
}

void BlobGenerator::writeText(const std::string& text, std::string& out) {
    out += '"';
    for (const char letter : text) {
        const auto octet = static_cast<unsigned char>(letter);
        if (octet < 0x20 || (octet < 0x80 && random_.oneIn(16))) {
            char escape[8];
            std::snprintf(escape, sizeof escape, random_.oneIn(2) ? "\\u%04x" : "\\u%04X", octet);
            out += escape;
        } else {
            if (letter == '"' || letter == '\\' || (letter == '/' && random_.oneIn(2))) out += '\\';
            out += letter;
        }
    }
    out += '"';
}

void BlobGenerator::write(const nlohmann::json& value, std::string& out) {
    space(out);
    if (value.is_string()) {
        writeText(value, out);
    } else if (value.is_array()) {
        out += '[';
        for (std::size_t place = 0; place < value.size(); ++place) {
            if (place > 0) out += ',';
            write(value[place], out);
        }
        out += ']';
    } else if (value.is_object()) {
        out += '{';
        const char* between = "";
        for (const auto& [key, member] : value.items()) {
            for (int times = random_.oneIn(8) ? 2 : 1; times > 0; --times) {
                out += between;
                space(out);
                writeText(key, out);
                space(out);
                out += ':';
                write(times == 2 ? this->value(3) : member, out);
                between = ",";
            }
        }
        out += '}';
    } else {
        out += value.dump();
    }
    space(out);
}

/// A registry whose one value lies so deep, the registry and the record counted.
std::string BlobGenerator::nested(int depth) {
    std::string open = "{\"deep\":{\"v\":";
    std::string close = "}}";
    for (int level = 2; level < depth; ++level) {
        const bool list = random_.oneIn(2);
        open += list ? "[" : "{\"k\":";
        close.insert(0, list ? "]" : "}");
    }
    return open + "1" + close;
}

std::string BlobGenerator::damaged(std::string blob) {
    if (blob.empty()) return blob;
    const std::size_t place = random_.below(blob.size());
    constexpr char octets[] = {'\0', '"', '\\', '{', '}', '[',    ']',    ',',
                               ':',  '0', 'e',  '-', '.', '\x7f', '\x80', '\xff'};
    switch (random_.below(4)) {
        case 0: blob.resize(place); break;
        case 1: blob[place] = random_.pick(octets); break;
        case 2: blob.insert(place, 1, random_.pick(octets)); break;
        default: blob.erase(place, 1); break;
    }
    return blob;
}

std::string BlobGenerator::blob() {
    std::string out;
    switch (random_.below(8)) {
        case 0:
        case 1: return random_.pick(oddBlobs);
        case 2: return nested(static_cast<int>(random_.between(510, 515)));
        case 3: write(value(0), out); return out;
        case 4: write(registry(true), out); return damaged(out);
        case 5: out = "\xEF\xBB\xBF"; [[fallthrough]];
        default: write(registry(true), out); return out;
    }
}

}  // namespace nearcast::scenario
