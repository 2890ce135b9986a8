#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# The man page and the completion of the station know every subcommand, and the completion the options of each; those of
# the simulated switch know its options. Arguments: the source folder, the station, the switch, and what runs them, if
# anything.
set -euo pipefail
source=$1
station=("${@:4}" "$2")
simhost=("${@:4}" "$3")

expect_same() { # WHAT LINES EXPECTED
    diff <(sort -u <<<"$2") <(sort -u <<<"$3") || { echo "$1: < found, > expected" >&2; exit 1; }
}

subcommands=$("${station[@]}" list --json | sed -n 's/^ *"name": "\(.*\)",$/\1/p')
[ "$(wc -l <<<"$subcommands")" -gt 20 ]

in_man=$(sed -nE 's/^\.It Cm ((fpga )?[a-z0-9-]+).*/\1/p' "$source/docs/man/facmsg-station.1")
expect_same "man page" "$in_man" "$subcommands"

# shellcheck source=/dev/null
. "$source/docs/completion/facmsg-station"
compopt() { :; } # there is no command line to set options of
facmsg-station() { "${station[@]}" "$@"; }

complete_line() { # WORD...: what may stand in place of the last one
    COMP_WORDS=(facmsg-station "$@")
    COMP_CWORD=$#
    _facmsg_station
    printf '%s\n' "${COMPREPLY[@]}"
}
expect_same "completion" "$(complete_line --directory x '')" "$(cut -d' ' -f1 <<<"$subcommands")"
expect_same "completion of a name" "$(complete_line broad)" $'broadcast\nbroadcast-flow'
expect_same "completion of fpga" "$(complete_line fpga '')" "$(sed -n 's/^fpga //p' <<<"$subcommands")"
expect_same "completion of an option" "$(complete_line packet --any-speed --me)" --medium
expect_same "completion of a plan's option" "$(complete_line plan x.toml --s)" \
    $'--serial\n--skip\n--station\n--stop-on-fail'
expect_same "completion of a speed" "$(complete_line packet --speed '')" $'10M\n100M\n1G\n2.5G\n5G\n10G'
expect_same "completion of a medium" "$(complete_line packet --medium '')" $'copper\nfiber\n0\n1'
expect_same "completion of steps" \
    "$(complete_line plan "$source/station/plans/final-28.toml" --skip vop,packet-1)" vop,packet-1g

options=$("${simhost[@]}" --help | grep -oE '^  (-h,)?--[a-z-]+' | grep -oE -- '--.*')
in_man=$(sed -nE 's/^\.It Fl -([a-z-]+).*/--\1/p' "$source/docs/man/facmsg-simhost.1")
expect_same "man page of the switch" "$in_man" "$options"
# shellcheck source=/dev/null
. "$source/docs/completion/facmsg-simhost"
facmsg-simhost() { "${simhost[@]}" "$@"; }
complete_switch() { # WORD...
    COMP_WORDS=(facmsg-simhost "$@")
    COMP_CWORD=$#
    _facmsg_simhost
    printf '%s\n' "${COMPREPLY[@]}"
}
expect_same "completion of the switch" "$(complete_switch --pa)" --pace
expect_same "completion of a board" "$(complete_switch --board faulty)" faulty-28
