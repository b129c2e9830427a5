# SPDX-License-Identifier: Apache-2.0
"""The states of the table in docs/radios.md, as the delegate is told them."""

from framework import expect, test


@test("TheRealServiceTakesTheVirtualControllerForAnAdapter", boot="quick")
def adapter(lab):
    controller = lab.controller()
    lab.bluetoothd()
    properties = lab.adapter()
    expect(properties["Address"] == "00:AA:01:00:00:01", f"another address: {properties['Address']}")
    unknown = controller.counters()["unknown"]
    expect(not unknown, f"the kernel wants commands that the controller does not know: {unknown}")
