#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# The capture of the simulated switch as another program reads it: the frames that the CPU sent for a stress test in
# port pairs, one by broadcast, and a packet test. Arguments: the host program, the station, and what runs them, if
# anything. Exits with 77 when there is no tshark to read captures with.
set -euo pipefail
simhost=$1 station=$2
runner=("${@:3}")

command -v tshark >/dev/null || { echo "SKIPPED: tshark, which reads the captures, is not installed"; exit 77; }

folder=$(mktemp -d)
switch=
trap '[ -z "$switch" ] || kill "$switch"; rm -rf "$folder"' EXIT
export WIRESHARK_CONFIG_DIR=$folder # nobody's own preferences

start_switch() { # returns once it serves requests
    : >"$folder/log"
    "${runner[@]}" "$simhost" --board healthy-2 --quiet --directory "$folder" --pcap "$folder/frames.pcap" \
        >"$folder/log" &
    switch=$!
    until grep -q '^ready' "$folder/log"; do
        kill -0 "$switch"
        sleep 0.05
    done
}

capture() { # SUBCOMMAND [OPTION]...: writes "source ethertype [VLAN] length" of every frame to the file "frames"
    start_switch
    "${runner[@]}" "$station" --directory "$folder" "$@"
    kill "$switch"
    wait "$switch" # the capture is whole once the switch has ended well
    switch=
    tshark -n -r "$folder/frames.pcap" -T fields -e eth.src -e eth.type -e vlan.id -e frame.len | tr -s '\t' ' ' \
        >"$folder/frames"
}

counted() { uniq -c | sed 's/^ *//'; }

stress_frames() { # VLAN PORT...: four patterns of each length from each port
    local port length
    for port in "${@:2}"; do
        for length in 64 128 512 1518; do echo "4 f0:f1:f2:f3:f4:0$port 0x8100 $1 $length"; done
    done
}

# A packet test's frame is captured twice, as the CPU sends it and as it comes back; both ports take turns.
packet_frames() { printf '1000 f0:f1:f2:f3:f4:0%d 0xf0f0 128\n' 1 2; }

capture flow
diff <(stress_frames 100 1 2) <(counted <"$folder/frames")
capture broadcast-flow
diff <(stress_frames 1 1) <(counted <"$folder/frames")
capture packet --any-speed
diff <(packet_frames) <(sort "$folder/frames" | counted)
