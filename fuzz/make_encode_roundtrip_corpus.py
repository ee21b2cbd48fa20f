#!/usr/bin/env python3
"""Writes the seed corpus of encode_roundtrip_fuzzer: one file per operation
sequence (the input format is described at the top of the fuzzer)."""

import os

MSRP, MVRP = 0, 1
# MSRP type operands (type 1 + operand % 4).
TALKER, TALKER_FAILED, LISTENER, DOMAIN = 0, 1, 2, 3
NEW, JOIN_IN, IN, JOIN_MT, MT, LV = range(6)
IGNORE, ASKING_FAILED, READY, READY_FAILED = range(4)


def op(code, operand=0):
    return bytes([(operand << 3) | code])


def next_value(event, declaration=0):
    return op(0, declaration * 6 + event)


def new_vector(event, value, type_=None):
    return op(3, event) + (bytes([type_]) if type_ is not None else b"") + value


def new_message(type_, event, value):
    return op(5, type_) + bytes([event]) + value


def leave_all(type_):
    return op(6, type_)


SEND_TX_LV_ALL = op(7)


def talker(stream_id, dmac_low):
    return (stream_id.to_bytes(8, "big") + bytes([0x91, 0xE0, 0xF0, 0x00, 0xFE, dmac_low])
            + bytes.fromhex("0002 00e0 0001 70 00001388"))


def talker_failed(stream_id, dmac_low):
    return talker(stream_id, dmac_low) + bytes.fromhex("8000001122334455 02")


def listener(stream_id, declaration):
    return stream_id.to_bytes(8, "big") + bytes([declaration])


def vid(v):
    return v.to_bytes(2, "big")


SEEDS = {
    # One Talker vector of four values.
    "msrp_talker_vector": (MSRP, new_vector(JOIN_IN, talker(0x0011223344556677, 0), TALKER)
                           + next_value(IN) + next_value(LV) + next_value(JOIN_MT)),
    # A Listener vector of five values with their declarations.
    "msrp_listener_vector": (MSRP, new_message(LISTENER, JOIN_IN, listener(0x0102030405060708, READY))
                             + next_value(IN, IGNORE) + next_value(LV, ASKING_FAILED)
                             + next_value(JOIN_IN, READY_FAILED) + next_value(JOIN_MT, READY)),
    # Every MSRP type, a LeaveAll-only message and a LeaveAll riding on a Domain vector.
    "msrp_all_types": (MSRP, new_message(TALKER, JOIN_MT, talker(1, 1)) + next_value(JOIN_MT)
                       + new_message(TALKER_FAILED, LV, talker_failed(9, 9))
                       + new_message(LISTENER, NEW, listener(0xAA, ASKING_FAILED)) + next_value(NEW, READY_FAILED)
                       + new_message(DOMAIN, MT, bytes.fromhex("06 03 0002"))
                       + leave_all(LISTENER) + SEND_TX_LV_ALL
                       + new_message(DOMAIN, JOIN_IN, bytes.fromhex("07 04 0002")) + next_value(JOIN_IN)),
    # Two VLAN vectors, then a LeaveAll message (the packet is sent first).
    "mvrp_vectors_and_leave_all": (MVRP, new_vector(JOIN_IN, vid(10), 0) + next_value(IN) + next_value(LV)
                                   + next_value(JOIN_MT) + new_vector(NEW, vid(100))
                                   + leave_all(0) + SEND_TX_LV_ALL + new_message(0, JOIN_IN, vid(1))),
    # One vector declaring VLANs 1 to 4094.
    "mvrp_all_vlans": (MVRP, new_vector(JOIN_IN, vid(1), 0) + next_value(JOIN_IN) * 4093),
    # Enough vectors to fill a packet and start the next.
    "mvrp_full_packet": (MVRP, new_vector(NEW, vid(2), 0)
                         + b"".join(new_vector(JOIN_MT, vid(2 * v + 10)) for v in range(400))),
}


def main():
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus", "encode_roundtrip")
    os.makedirs(out, exist_ok=True)
    for name, (application, data) in SEEDS.items():
        with open(os.path.join(out, name), "wb") as f:
            f.write(bytes([application]) + data)


if __name__ == "__main__":
    main()
