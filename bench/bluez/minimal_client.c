/* SPDX-License-Identifier: Apache-2.0 */
/* The least that a client of BlueZ can do with sd-bus and still hear every report: one match, the signal and the
 * manufacturer data out of each message. It remembers nothing of any device. The floor that the radio is measured
 * against.
 *
 * Ends at SIGTERM, or when the bus is lost, and prints how many reports it heard. */
#include <errno.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <systemd/sd-bus.h>

static unsigned long reports;
static int16_t last_rssi;
static uint8_t last_data[256];
static volatile sig_atomic_t ended;

static void end(int signal_number) {
    (void)signal_number;
    ended = 1;
}

static int read_manufacturer_data(sd_bus_message* message) {
    int result = sd_bus_message_enter_container(message, 'v', "a{qv}");
    if (result < 0) return result;
    result = sd_bus_message_enter_container(message, 'a', "{qv}");
    while ((result = sd_bus_message_enter_container(message, 'e', "qv")) > 0) {
        uint16_t company = 0;
        const void* bytes = NULL;
        size_t size = 0;
        sd_bus_message_read(message, "q", &company);
        sd_bus_message_enter_container(message, 'v', "ay");
        sd_bus_message_read_array(message, 'y', &bytes, &size);
        memcpy(last_data, bytes, size < sizeof last_data ? size : sizeof last_data);
        sd_bus_message_exit_container(message);
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    return sd_bus_message_exit_container(message);
}

static int changed(sd_bus_message* message, void* data, sd_bus_error* error) {
    const char* name = NULL;
    int heard = 0;
    (void)data;
    (void)error;
    if (!sd_bus_message_is_signal(message, "org.freedesktop.DBus.Properties", "PropertiesChanged")) return 0;
    if (sd_bus_message_read(message, "s", &name) < 0 || strcmp(name, "org.bluez.Device1") != 0) return 0;
    if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) return 0;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        sd_bus_message_read(message, "s", &name);
        if (strcmp(name, "RSSI") == 0) {
            sd_bus_message_read(message, "v", "n", &last_rssi);
            heard = 1;
        } else if (strcmp(name, "ManufacturerData") == 0) {
            read_manufacturer_data(message);
            heard = 1;
        } else {
            sd_bus_message_skip(message, "v");
        }
        sd_bus_message_exit_container(message);
    }
    reports += (unsigned long)heard;
    return 0;
}

int main(void) {
    struct sigaction action = {.sa_handler = end};
    sd_bus* bus = NULL;
    sigaction(SIGTERM, &action, NULL);
    if (sd_bus_open_system(&bus) < 0) return 1;
    if (sd_bus_add_match(bus, NULL, "type='signal',path_namespace='/org/bluez'", changed, NULL) < 0) return 1;
    if (sd_bus_call_method(bus, "org.bluez", "/org/bluez/hci0", "org.bluez.Adapter1", "SetDiscoveryFilter", NULL, NULL,
                           "a{sv}", 2, "Transport", "s", "le", "DuplicateData", "b", 1) < 0) {
        return 1;
    }
    if (sd_bus_call_method(bus, "org.bluez", "/org/bluez/hci0", "org.bluez.Adapter1", "StartDiscovery", NULL, NULL,
                           NULL) < 0) {
        return 1;
    }
    while (!ended) {
        int result = sd_bus_process(bus, NULL);
        if (result == 0) result = sd_bus_wait(bus, UINT64_MAX);
        if (result < 0 && result != -EINTR) break;
    }
    printf("%lu\n", reports);
    sd_bus_unref(bus);
    return 0;
}
