# SPDX-License-Identifier: Apache-2.0
"""A hand on the controller that nobody knows of."""

import socket
import struct


def send_command(index, opcode, parameters):
    """Sends one command past whoever thinks that the controller is theirs."""
    with socket.socket(socket.AF_BLUETOOTH, socket.SOCK_RAW, socket.BTPROTO_HCI) as raw:
        raw.bind((index,))
        raw.send(struct.pack("<BHB", 0x01, opcode, len(parameters)) + parameters)
