#!/usr/bin/env bash
# boards_test.sh SIMHOST STATION PLAN ARTEFACTS CHECK_JOURNAL SCHEMA: runs a plan on a healthy and on a faulty board, and looks at all
# that a run leaves behind as others do: journal, JUnit, CSV, and the page in a browser, whose pictures are left in
# ARTEFACTS. Exits with 77 when there is no browser.
set -euo pipefail
simhost=$1 station=$2 plan=$3 artefacts=$4 check_journal=$5 schema=$6
command -v chromium >/dev/null && command -v xmllint >/dev/null || {
    echo "chromium or xmllint is not installed"
    exit 77
}
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

run_plan() { # BOARD EXIT_CODE [OPTION]...: sets run
    local code=0
    "$simhost" --board "$1" --directory "$folder/$1" --quiet >"$folder/ready" &
    switch=$!
    until grep -q '^ready' "$folder/ready"; do
        kill -0 "$switch"
        sleep 0.05
    done
    "$station" --directory "$folder/$1" plan "$plan" --serial SW24000123 --operator "J. Doe" --station FT-03 \
        --results "$folder/$1/results" "${@:3}" >"$folder/console" || code=$?
    stop_switch
    [ "$code" -eq "$2" ] || fail "$1: exit $code: $(cat "$folder/console")"
    run=$(echo "$folder/$1"/results/*)
    tail -n 1 "$folder/console" | grep -qx "Report: $run/report.html" || fail "$1: the console does not end with the path"
    "$station" check "$run/journal.jsonl" || fail "$1: the journal is not valid"
    "$check_journal" "$schema" "$run/journal.jsonl" || fail "$1: schema"
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

check_results() { # PICTURE FAILING_PORT...
    local failures=0 port
    browse --dump-dom "file://$run/report.html" >"$folder/dom"
    browse --window-size=1280,1400 --screenshot="$artefacts/$1.png" "file://$run/report.html" >/dev/null
    [ "$(head -c 4 "$artefacts/$1.png" | tail -c 3)" = PNG ] || fail "$1: no picture"
    expect_count 28 grep -c 'class="port p-' "$folder/dom"
    expect_count "$(($# - 1))" grep -c 'class="port p-fail"' "$folder/dom"
    for port in "${@:2}"; do
        expect_count 1 grep -c "aria-label=\"port $port: FAIL\"" "$folder/dom"
        grep -q "^SW24000123,[0-9a-f]*,packet,2,$port,diagnosis,packet,,,,FAIL," "$run/results.csv" || fail "$1: CSV, port $port"
        failures=$((failures + $(xmllint --xpath "count(//testcase[contains(@classname, '.port$port')]/failure)" "$run/junit.xml")))
        [ "$failures" -gt 0 ] || fail "$1: JUnit, port $port"
    done
    expect_count "$failures" xmllint --xpath "count(//testcase[contains(@classname, '.port')]/failure)" "$run/junit.xml"
    expect_count 0 xmllint --xpath 'count(//error)' "$run/junit.xml"
}

run_plan healthy-28 0
check_results run-pass
! grep -q ',FAIL,' "$run/results.csv" || fail "a failure in the CSV of a unit that passed"
run_plan faulty-28 1 --skip broadcast-flow,serpentine
check_results run-fail 13 20
