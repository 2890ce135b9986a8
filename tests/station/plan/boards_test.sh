#!/usr/bin/env bash
# boards_test.sh SIMHOST STATION PLAN ARTEFACTS CHECK_JOURNAL SCHEMA: runs a plan on a healthy and on a faulty board, and
# looks at all that a run leaves behind as others do: journal, JUnit, CSV, and the page in a browser and on paper, whose
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

run_plan() { # BOARD EXIT_CODE [OPTION]...: sets run
    local code=0 board=$1
    [ ! -e "$folder/$1.toml" ] || board=$folder/$1.toml
    rm -rf "${folder:?}/$1"
    : >"$folder/ready" # the switch of the run before was ready
    "$simhost" --board "$board" --directory "$folder/$1" --quiet >"$folder/ready" &
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

print_page() { # NAME: leaves the text of its sheets in "$folder/sheets", without blanks, and the number of them in sheets
    browse --no-pdf-header-footer --print-to-pdf="$artefacts/$1.pdf" "file://$run/report.html"
    sheets=$(pdfinfo "$artefacts/$1.pdf" | sed -n 's/^Pages: *//p')
    pdftotext -raw "$artefacts/$1.pdf" - | tr -d '[:space:]' >"$folder/sheets"
    pdftotext -raw -l 1 "$artefacts/$1.pdf" - | tr -d '[:space:]' >"$folder/first_sheet"
}

expect_printed() { # FILE TEXT
    grep -qF "$(tr -d '[:space:]' <<<"$2")" "$1" || fail "not on paper: $2"
}

# What failed stands on the first sheet, and once more in its step with all that was measured.
check_sheets() { # COLUMN...
    local sentence column count=0
    while IFS= read -r sentence; do
        count=$((count + 1))
        expect_printed "$folder/first_sheet" "$sentence"
        [ "$(grep -oF "$(tr -d '[:space:]' <<<"$sentence")" "$folder/sheets" | wc -l)" -ge 2 ] || fail "only once: $sentence"
    done < <(xmllint --xpath "//testcase[contains(@classname, '.port')]/failure/text()" "$run/junit.xml")
    [ "$count" -gt 0 ] || fail "no failure to look for"
    for column in "$@"; do
        expect_printed "$folder/sheets" "$column"
    done
}

run_plan healthy-28 0
check_results run-pass
! grep -q ',FAIL,' "$run/results.csv" || fail "a failure in the CSV of a unit that passed"
expect_count 28 grep -c 'class="port p-pass"' "$folder/dom"
print_page run-pass
[ "$sheets" -le 2 ] || fail "a pass takes $sheets sheets"

run_plan faulty-28 1
check_results run-fail 13 20
expect_count 26 grep -c 'class="port p-part"' "$folder/dom" # two steps stopped before they got to them
print_page run-fail
check_sheets 'Missing: serpentine'

cat >"$folder/lossy.toml" <<END
base = "$(realpath "$(dirname "$plan")/../../sim/boards/cabled-28.toml")"
name = "lossy"
[[faults]]
kind = "frame_loss"
ports = 7
every = 900
END
run_plan lossy 1
expect_count 2 xmllint --xpath 'count(//failure[../@name != "step"])' "$run/junit.xml"
print_page run-lossy
check_sheets transmitted fcs_errors 'speed_codes_extended_copper 255'

run_plan healthy-28 6 --only packet
grep -q 'NOT_APPLICABLE' "$run/journal.jsonl" || fail "a part of the plan ends like the whole"
expect_count 1 xmllint --xpath 'count(//testcase[@name = "whole plan"]/skipped)' "$run/junit.xml"
browse --dump-dom "file://$run/report.html" >"$folder/dom"
expect_count 28 grep -c 'class="port p-part"' "$folder/dom"
grep -q 'Missing: vop .*ports 1-16' "$folder/dom" || fail "the page does not say what is missing"
! grep -q 'Missing: poe-version' "$folder/dom" || fail "a step that judges no ports is missing"
