#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# boards_test.sh SIMHOST STATION PLAN ARTEFACTS CHECK_JOURNAL SCHEMA: runs a plan on whole and on faulty boards, and looks
# at all that a run leaves behind as others do: journal, JUnit, CSV, and the page in a browser and on paper, whose
# pictures are left in ARTEFACTS. Exits with 77 when there is no browser.
set -euo pipefail
simhost=$1 station=$2 plan=$3 artefacts=$4 check_journal=$5 schema=$6
for program in chromium xmllint pdftotext; do
    command -v "$program" >/dev/null || {
        echo "$program is not installed"
        exit 77
    }
done
folder=$(mktemp -d)
switch=
stop_switch() {
    [ -z "$switch" ] || { kill "$switch" && wait "$switch" || true; }
    switch=
}
trap 'stop_switch; rm -rf "$folder"' EXIT
mkdir -p "$artefacts"

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

run_plan() { # BOARD EXIT_CODE [OPTION]...: sets run, and shows its page
    local code=0 name
    name=$(basename "$1" .toml)
    rm -rf "${folder:?}/$name"
    : >"$folder/ready" # the switch of the run before was ready
    "$simhost" --board "$1" --directory "$folder/$name" --quiet >"$folder/ready" &
    switch=$!
    until grep -q '^ready' "$folder/ready"; do
        kill -0 "$switch"
        sleep 0.05
    done
    "$station" --directory "$folder/$name" plan "$plan" --serial SW24000123 --operator "J. Doe" --station FT-03 \
        --results "$folder/$name/results" "${@:3}" >"$folder/console" || code=$?
    stop_switch
    [ "$code" -eq "$2" ] || fail "$1: exit $code: $(cat "$folder/console")"
    run=$(echo "$folder/$name"/results/*)
    "$station" check "$run/journal.jsonl" || fail "$1: the journal is not valid"
    "$check_journal" "$schema" "$run/journal.jsonl" || fail "$1: schema"
    browse --dump-dom "file://$run/report.html" >"$folder/dom"
    browse --window-size=1280,1400 --screenshot="$artefacts/run-$name.png" "file://$run/report.html" >/dev/null
}

browse() { # OPTION... PAGE
    timeout 60 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
        --disable-background-networking --disable-component-update --disable-sync --hide-scrollbars \
        --user-data-dir="$folder/profile" "$@" 2>>"$folder/browser.log" || fail "$(tail -n 5 "$folder/browser.log")"
}

expect_count() { # NUMBER COMMAND...
    local found
    found=$("${@:2}" || true)
    [ "$found" = "$1" ] || fail "${*:2}: $found, should be $1"
}

count_ports() { # STATE NUMBER
    expect_count "$2" grep -c "class=\"port p-$1\"" "$folder/dom"
}

print_page() { # leaves the text of its sheets, without blanks, in "$folder/sheets", of the first in "$folder/first_sheet"
    browse --no-pdf-header-footer --print-to-pdf="$artefacts/run.pdf" "file://$run/report.html"
    pdftotext -raw "$artefacts/run.pdf" - | tr -d '[:space:]' >"$folder/sheets"
    pdftotext -raw -l 1 "$artefacts/run.pdf" - | tr -d '[:space:]' >"$folder/first_sheet"
}

expect_printed() { # FILE TEXT TIMES
    [ "$(grep -oF "$(tr -d '[:space:]' <<<"$2")" "$folder/$1" | wc -l)" -ge "$3" ] || fail "not $3 times on paper: $2"
}

run_plan healthy-28 0
count_ports pass 28
expect_count 0 grep -c ',FAIL,' "$run/results.csv"
print_page
sheets=$(pdfinfo "$artefacts/run.pdf" | sed -n 's/^Pages: *//p')
[ "$sheets" -le 2 ] || fail "a pass takes $sheets sheets"

run_plan faulty-28 1
tail -n 1 "$folder/console" | grep -qx "Report: $run/report.html" || fail "the console does not end with the path"
count_ports fail 2
count_ports part 26 # two steps stopped before they got to them
for port in 13 20; do
    expect_count 1 grep -c "aria-label=\"port $port: FAIL\"" "$folder/dom"
    expect_count 1 grep -c "^SW24000123,[0-9a-f]*,packet,2,$port,diagnosis,packet,,,,FAIL," "$run/results.csv"
    expect_count 1 xmllint --xpath "count(//testcase[contains(@classname, 'packet.port$port')]/failure)" "$run/junit.xml"
done

# What failed stands on the first sheet, and once more in its step with all that was measured.
cat >"$folder/lossy.toml" <<END
base = "$(realpath "$(dirname "$plan")/../../sim/boards/cabled-28.toml")"
name = "lossy"
faults = [{kind = "frame_loss", ports = 7, every = 900}]
END
run_plan "$folder/lossy.toml" 1
print_page
sentence=$(xmllint --xpath "//testcase[contains(@classname, '.port')]/failure/text()" "$run/junit.xml" | head -n 1)
expect_printed first_sheet "$sentence" 1
expect_printed sheets "$sentence" 2
for column in transmitted fcs_errors 'speed_codes_extended_copper 255'; do
    expect_printed sheets "$column" 1
done

run_plan healthy-28 6 --only packet
count_ports part 28
expect_count 1 xmllint --xpath 'count(//testcase[@name = "whole plan"]/skipped)' "$run/junit.xml"
grep -q 'Missing: vop .*ports 1-16' "$folder/dom" || fail "the page does not say what is missing"
expect_count 0 grep -c 'Missing: poe-version' "$folder/dom" # it judges no ports
