#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Makes the Debian packages, unpacks them into a scratch root, and builds and runs the example host against it, by CMake
# and by pkg-config, and the one in C++ that the documentation shows. Arguments: build folder, source folder, C compiler,
# C++ compiler, and what runs programs, if anything.
set -euo pipefail
build=$1 source=$2 compiler=$3 cxx_compiler=$4
runner=("${@:5}")

folder=$(mktemp -d)
host=
stop_host() {
    [ -z "$host" ] || { kill "$host" && wait "$host" || true; }
    host=
}
trap 'stop_host; rm -rf "$folder"' EXIT
root=$folder/root

fail() {
    echo "$*" >&2
    exit 1
}

unpack_packages() {
    cpack --config "$build/CPackConfig.cmake" -B "$folder/packages" >"$folder/cpack.log" 2>&1 ||
        fail "$(cat "$folder/cpack.log")"
    rm -rf "$folder/packages/_CPack_Packages"
    local package names
    names=$(cd "$folder/packages" && printf '%s\n' *.deb | sed 's/_.*//' | tr '\n' ' ')
    [ "$names" = "facmsg-tools libfacmsg-dev libfacmsg0 " ] || fail "packages: $names"
    for package in "$folder"/packages/*.deb; do
        dpkg-deb --field "$package" Package Version Architecture Depends Description
        dpkg-deb --contents "$package"
        dpkg-deb --extract "$package" "$root"
        [ -f "$root/usr/share/doc/$(dpkg-deb --field "$package" Package)/copyright" ] || fail "$package: no licence"
        [ -z "$(dpkg-deb --contents "$package" | grep -vE '^(drwxr-xr-x|-rw-r--r--|-rwxr-xr-x|lrwxrwxrwx) root/root ')" ] ||
            fail "$package: wrong permissions"
    done
}

# It serves requests, with nothing but the installed library.
run_host() { # PROGRAM
    local place=$folder/place output=
    rm -rf "$place"
    mkdir -p "$place/tmp"
    (cd "$place" && exec env LD_LIBRARY_PATH="$libraries" "${runner[@]}" "$1" >output) &
    host=$!
    until [ -S "$place/tmp/.factory_ssa_socket" ]; do
        kill -0 "$host"
        sleep 0.05
    done
    output=$("${runner[@]}" "$root/usr/bin/facmsg-station" --directory "$place" factory-mode)
    [ "$output" = "PASS  the switch is in factory mode" ] || fail "the station says: $output"
    [ "$(cat "$place/output")" = "factory mode" ] || fail "the host says: $(cat "$place/output")"
    stop_host
}

expect_control() { # PACKAGE FIELD TEXT...
    local field found text
    field=$2 found=$(dpkg-deb --field "$folder/packages/$1"_*.deb "$2")
    for text in "${@:3}"; do
        [[ $found == *"$text"* ]] || fail "$1: $field is '$found', should have '$text'"
    done
}

# Debian's own opinion; what it holds against an upload to Debian does not matter here.
look_for_faults() {
    local found
    found=$(lintian --fail-on none --tag-display-limit 0 "$folder"/packages/*.deb 2>"$folder/lintian.log") ||
        fail "lintian: $(cat "$folder/lintian.log")"
    ! grep '^E:' <<<"$found" || fail "lintian finds errors"
    echo "$found"
}

expect_pages() { # NAME.SECTION...: readable, with all that they are made of
    local page text
    for page in "$@"; do
        text=$(zcat "$root/usr/share/man/man${page##*.}/$page.gz") || fail "no man page $page"
        [ "$(wc -l <<<"$text")" -gt 30 ] || fail "man page $page is short"
    done
}

unpack_packages
look_for_faults
expect_pages facmsg-station.1 facmsg-simhost.1 facmsg-board.5 facmsg-plan.5 facmsg-journal.5
expect_control libfacmsg0 Depends "libc6 (>= "
expect_control libfacmsg-dev Depends "libfacmsg0 (= "
expect_control facmsg-tools Depends "libfacmsg0 (= " "libc6 (>= " "libstdc++6 (>= "
control_files=$(dpkg-deb --ctrl-tarfile "$folder"/packages/libfacmsg0_*.deb | tar -t)
grep -qx "./shlibs" <<<"$control_files" || fail "libfacmsg0 does not tell other packages how to depend on it"
libraries=$(dirname "$(find "$root" -name libfacmsg.so)")
example=$root/usr/share/doc/libfacmsg-dev/examples/minimal_host.c
! grep -rlF "$source" "$root" || fail "these files name the builder's folders"

cmake -S "$source/tests/install/host" -B "$folder/host" -DCMAKE_C_COMPILER="$compiler" -DEXAMPLE="$example" \
    -DCMAKE_PREFIX_PATH="$root/usr" ${5:+-DCMAKE_LIBRARY_ARCHITECTURE="$(basename "$libraries")"} >/dev/null
cmake --build "$folder/host" >/dev/null
run_host "$folder/host/host"

# In place, the compiler finds all by itself but the library's name.
flags=$(PKG_CONFIG_LIBDIR=$libraries/pkgconfig pkg-config --cflags facmsg)
[ -z "${flags// /}" ] || fail "the flags for a system's own installation: '$flags'"

with_pkg_config() { # COMPILER... : adds the flags for the scratch root
    local words
    read -ra words < <(PKG_CONFIG_SYSROOT_DIR=$root PKG_CONFIG_LIBDIR=$libraries/pkgconfig pkg-config --cflags --libs facmsg)
    "$@" -Wall -Wextra -Wpedantic -Werror "${words[@]}"
}
with_pkg_config "$compiler" -std=c99 "$example" -o "$folder/host_2"
run_host "$folder/host_2"
sed -n '/^```cpp$/,/^```$/{//!p}' "$root/usr/share/doc/libfacmsg-dev/hosting.md" >"$folder/host_3.cpp"
with_pkg_config "$cxx_compiler" -std=c++20 "$folder/host_3.cpp" -o "$folder/host_3"
run_host "$folder/host_3"

cmake --install "$build" --prefix "$folder/local" >/dev/null
[ -x "$folder/local/bin/facmsg-station" ] || fail "cmake --install leaves no station"
boards=$("${runner[@]}" "$folder/local/bin/facmsg-simhost" --list-boards)
grep -q '^healthy-28 ' <<<"$boards" || fail "the boards are not found: $boards"
flags=$(PKG_CONFIG_LIBDIR=$(dirname "$(find "$folder/local" -name facmsg.pc)") pkg-config --variable=includedir facmsg)
[ -e "$flags/facmsg.h" ] || fail "pkg-config looks for the headers of a moved installation in $flags"
