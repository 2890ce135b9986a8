#!/usr/bin/env bash
# browser_test.sh WRITE_SAMPLES ARTEFACTS: shows the sample reports in a browser. Every port of the panel must be there,
# and nothing may run or be fetched. Pictures are left in ARTEFACTS. Exits with 77 when there is no browser.
set -euo pipefail
write_samples=$1 artefacts=$2
command -v chromium >/dev/null && command -v xmllint >/dev/null || {
    echo "chromium or xmllint is not installed"
    exit 77
}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$artefacts"
"$write_samples" "$folder/runs" >/dev/null

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

browse() { # OPTION... PAGE
    timeout 60 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
        --disable-background-networking --disable-component-update --disable-sync --hide-scrollbars \
        --user-data-dir="$folder/profile" "$@" 2>>"$folder/browser.log" || fail "$(tail -n 5 "$folder/browser.log")"
}

picture() { # SAMPLE NAME OPTION...
    local file=$artefacts/report-$2.png
    rm -f "$file"
    browse "${@:3}" --window-size=1280,1400 --screenshot="$file" "file://$folder/runs/$1/report.html" >/dev/null
    [ "$(head -c 4 "$file" | tail -c 3)" = PNG ] || fail "$file is no PNG"
    [ "$(stat -c %s "$file")" -gt 40000 ] || fail "$file shows next to nothing"
}

check_page() { # SAMPLE PORTS
    local run=$folder/runs/$1
    ! grep -Eqi '<script|<link|<iframe|<object|<img|url\(|@import|(src|href)=' "$run/report.html" || fail "$1: not self-contained"
    browse --dump-dom "file://$run/report.html" >"$folder/dom"
    local port
    for ((port = 1; port <= $2; port++)); do
        [ "$(grep -c "data-port=\"$port\"" "$folder/dom")" -eq 1 ] || fail "$1: port $port is not drawn once"
    done
}

xmllint --noout "$folder"/runs/*/junit.xml || fail junit.xml
check_page front-28 28
check_page front-256 256
check_page failing 4
check_page hostile 1
grep -q '<td class="name">port 1</td><td>&lt;script&gt;' "$folder/dom" || fail "hostile: the text is not shown as it is"

picture front-28 pass
picture failing fail
picture front-256 dark --blink-settings=preferredColorScheme=0
picture incomplete incomplete
browse --no-pdf-header-footer --print-to-pdf="$artefacts/report-fail.pdf" "file://$folder/runs/failing/report.html"
[ "$(head -c 5 "$artefacts/report-fail.pdf")" = %PDF- ] || fail "the report cannot be printed"
