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

offers() { # PROGRAM WORD...: what may stand in place of the last one
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    "_${1//-/_}"
    printf '%s\n' "${COMPREPLY[@]}"
}
expect_same "completion" "$(offers facmsg-station --directory x '')" "$(cut -d' ' -f1 <<<"$subcommands")"
expect_same "completion of fpga" "$(offers facmsg-station fpga '')" "$(sed -n 's/^fpga //p' <<<"$subcommands")"

options=$("${simhost[@]}" --help | grep -oE '^  (-h,)?--[a-z-]+' | grep -oE -- '--.*')
in_man=$(sed -nE 's/^\.It Fl -([a-z-]+).*/--\1/p' "$source/docs/man/facmsg-simhost.1")
expect_same "man page of the switch" "$in_man" "$options"
# shellcheck source=/dev/null
. "$source/docs/completion/facmsg-simhost"
facmsg-simhost() { "${simhost[@]}" "$@"; }

while IFS=: read -r line completions; do
    read -ra words <<<"$line"
    [ "${line: -1}" != ' ' ] || words+=('')
    # shellcheck disable=SC2086 # each word of the row is a line
    expect_same "completion of $line" "$(offers "${words[@]}")" "$(printf '%s\n' $completions)"
done <<END
facmsg-station broad:broadcast broadcast-flow
facmsg-station packet --any-speed --me:--medium
facmsg-station plan x.toml --s:--serial --skip --station --stop-on-fail
facmsg-station packet --speed :10M 100M 1G 2.5G 5G 10G
facmsg-station packet --medium :copper fiber 0 1
facmsg-station plan $source/station/plans/final-28.toml --skip vop,packet-1:vop,packet-1g
facmsg-simhost --pa:--pace
facmsg-simhost --board faulty:faulty-28
END
