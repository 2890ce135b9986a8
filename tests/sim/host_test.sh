#!/usr/bin/env bash
#
# The simulated switch as a program: what wrong command lines are answered with, one host to a folder, the flow pressure
# test, and its capture as another program reads it. Arguments: the host program, the station, and what runs them, if
# anything. Exits with 77 when there is no tshark to read captures with; all else is tested then.
set -euo pipefail
simhost=("${@:3}" "$1") station=("${@:3}" "$2")

folder=$(mktemp -d)
switch=
trap '[ -z "$switch" ] || kill "$switch"; rm -rf "$folder"' EXIT
export WIRESHARK_CONFIG_DIR=$folder # nobody's own preferences

refused() { # MESSAGE [OPTION]...: ends with $expected, in $where
    local status=0
    timeout 10 "${simhost[@]}" --quiet --directory "${where:-$folder}" "${@:2}" >"$folder/out" 2>"$folder/log" || status=$?
    diff <(echo "facmsg-simhost: $1, ${expected:-2}") <(echo "$(<"$folder/log"), $status")
}
for pace in 0 0.009 1001 -1 1x nan; do
    refused "--pace: found '$pace', expected max or a number from 0.01 to 1000" "--pace=$pace"
done
refused "--pace: found nothing, expected max or a number from 0.01 to 1000" --pace
refused "--board: found more than one value, expected a board's name or a .toml file" --board a --board b
refused "--list-boards: found a value, expected none" --list-boards=1
refused "--list-boards: found beside --run-flow, expected one of the two" --list-boards --run-flow
refused "--log-level: found '1x', expected a number: 0 silent, 1 errors, 2 traces" --log-level 1x
refused "--drop-slot: found 'set_statu', did you mean set_status?" --drop-slot vlan --drop-slot set_statu
refused "unknown option '--bord', did you mean --board?" --bord healthy-2
refused "found 'x', expected options only; see --help" x
refused "--boards-dir: found '$folder', expected a folder with boards" --boards-dir "$folder"
refused "/dev/null: is no regular file, expected a board file" --board /dev/null
refused "$folder: is a directory, expected a board file" --board "$folder"
for pace in 0.01 1000 max; do
    refused "$folder/x.toml: no such file, expected a board file" --board "$folder/x.toml" --pace "$pace"
done
refused "--pcap: found nothing, expected a file that can be written" --pcap ''
where=/dev/null refused "--directory: found '/dev/null' (Not a directory), expected a folder, or where one can be made"

boards=$folder/boards
mkdir "$boards"
printf 'description = "two\\tports\\u007f"\nports = [{ ports = "1,2", copper_speeds = ["1G"] }]\n' >"$boards/plain.toml"
echo 'ports = 7' >"$boards/odd.toml"
diff - <(FACMSG_BOARDS=$boards "${simhost[@]}" --list-boards) <<END
odd                $boards/odd.toml:1:9: ports is 7, expected [[ports]] tables
plain              two\tports\x7f
END
FACMSG_BOARDS=$boards refused "--board: found 'plian', which is no .toml file and not in $boards, did you mean plain?" --board plian
refused "--pcap: found '$folder' (Is a directory), expected a file that can be written" --pcap "$folder"

start_switch() { # OPTION...: returns once it serves requests
    : >"$folder/log"
    "${simhost[@]}" --board healthy-2 --directory "$folder" "$@" >"$folder/log" 2>"$folder/errors" &
    switch=$!
    until grep -q '^ready' "$folder/log"; do
        kill -0 "$switch"
        sleep 0.05
    done
}

stop_switch() { # the capture is whole once the switch has ended well
    kill "$switch"
    wait "$switch"
    switch=
}

start_switch --pace 100 --drop-slot vlan --pcap /dev/full
"${station[@]}" --directory "$folder" factory-mode >/dev/null
"${station[@]}" --directory "$folder" poe-debug 2 >/dev/null
"${station[@]}" --directory "$folder" port-debug 3 >/dev/null
diff - <(sed -n '2,5p; 7,9p' "$folder/log") <<'END'
ports: 2, cables and plugs: 1
wires: line rate / 10000, at least 1 Mbit/s
pace: 100 board seconds per second
dropped slot: vlan
factory mode: 1
poe debug level: 2
port debug level: 3
END
expected=3 refused "$folder: another host serves here already" --board healthy-2
"${station[@]}" --directory "$folder" packet --any-speed >/dev/null # and the first goes on
stop_switch
diff <(echo "facmsg-simhost: /dev/full: not everything could be written") "$folder/errors"

cat >"$folder/flow.toml" <<'END'
rate_divisor = 1000000
min_wire_mbps = 1
cables = "1-4"
ports = [{ ports = "1-4", copper_speeds = ["10M", "100M", "1G"], flags = ["any_speed", "auto_duplex"] }]
faults = [{ kind = "fcs_errors", ports = 1, every = 10 }, { kind = "stuck_counter", ports = 3 }]
END
"${simhost[@]}" --quiet --board "$folder/flow.toml" --directory "$folder" --run-flow >"$folder/flow"
[ "$(wc -l <"$folder/flow")" = 2 ] # the ready line and the reply
grep -qF '"port_count": 4, "settings": [{"fail_stage": 9, "speed_codes": [1, 255, 3], "port_down": [], "port_fcs_err": [1], "port_cnt_err": [3, 4]}, ' "$folder/flow"

command -v tshark >/dev/null || { echo "SKIPPED: tshark, which reads the captures, is not installed"; exit 77; }

capture() { # SUBCOMMAND [OPTION]...: writes "source ethertype [VLAN] length" of every frame to the file "frames"
    start_switch --pcap "$folder/frames.pcap"
    "${station[@]}" --directory "$folder" "$@"
    stop_switch
    tshark -n -r "$folder/frames.pcap" -T fields -e eth.src -e eth.type -e vlan.id -e frame.len | tr -s '\t' ' ' \
        >"$folder/frames"
}

counted() { uniq -c | sed 's/^ *//'; }

capture flow # four patterns of each length from each port
diff <(printf '4 f0:f1:f2:f3:f4:0%s\n' {1,2}" 0x8100 100 "{64,128,512,1518}) <(counted <"$folder/frames")
# A packet test's frame is captured twice, as the CPU sends it and as it comes back; both ports take turns.
capture packet --any-speed
diff <(printf '1000 f0:f1:f2:f3:f4:0%d 0xf0f0 128\n' 1 2) <(sort "$folder/frames" | counted)
