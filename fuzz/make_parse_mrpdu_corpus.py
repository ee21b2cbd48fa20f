#!/usr/bin/env python3
"""Writes the seed corpus of parse_mrpdu_fuzzer: one file per valid MRPDU,
prefixed with the octet that picks the engine (0 MSRP, 1 MVRP)."""

import os

MSRP, MVRP = 0, 1

SEEDS = {
    # VLANs 10, 11 (JoinIn) and 12 (Lv).
    "mvrp_three_vlans": (MVRP, "00 01 02 0003 000a 2f 0000 0000"),
    # LeaveAll with 3 values, then 4 values ending in a packed octet of 0.
    "mvrp_two_vectors": (MVRP, "00 01 02 2003 000a 2b 0004 0064 63 00 0000 0000"),
    # LeaveAll only.
    "mvrp_leave_all": (MVRP, "00 01 02 2000 0001 0000 0000"),
    # Version 1: an unknown type skipped vector by vector, then VLAN 10.
    "mvrp_future_version": (MVRP, "01 02 03 0003 aabbcc 2b 0000 01 02 0001 000a 24 0000 0000"),
    # Listener of 5 values: 2 three-packed and 2 four-packed octets.
    "msrp_listener": (MSRP, "00 03 08 0010 0005 0011223344550001 2b b4 87 80 0000 0000"),
    # Talker Advertise (2 values), Talker Failed, Domain.
    "msrp_talkers_domain": (
        MSRP,
        "00"
        " 01 19 001e 0002 0011223344550001 91e0f000fe00 0002 0080 0001 60 00001000 2a 0000"
        " 02 22 0027 0001 0011223344550009 91e0f000fe08 0002 0080 0001 60 00001000"
        " 800000 1c73000001 05 6c 0000"
        " 04 04 0009 0001 06030002 48 0000"
        " 0000",
    ),
    # Version 1: an unknown type skipped by its list length, then a Domain.
    "msrp_future_version": (MSRP, "01 09 07 000c 0001 aaaaaaaaaaaaaa 24 0000 04 04 0009 0001 06030002 24 0000 0000"),
}


def main():
    out = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus", "parse_mrpdu")
    os.makedirs(out, exist_ok=True)
    for name, (engine, hex_text) in SEEDS.items():
        with open(os.path.join(out, name), "wb") as f:
            f.write(bytes([engine]) + bytes.fromhex(hex_text.replace(" ", "")))


if __name__ == "__main__":
    main()
