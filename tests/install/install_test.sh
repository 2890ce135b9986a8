#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# Makes the Debian packages, unpacks them into a scratch root, and builds and runs the example host against it, by CMake
# and by pkg-config. Arguments: build folder, source folder, C compiler, and what runs programs, if anything.
set -euo pipefail
build=$1 source=$2 compiler=$3
runner=("${@:4}")

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

unpack_packages
expect_control libfacmsg0 Depends "libc6 (>= "
expect_control libfacmsg-dev Depends "libfacmsg0 (= "
expect_control facmsg-tools Depends "libfacmsg0 (= " "libc6 (>= " "libstdc++6 (>= "
control_files=$(dpkg-deb --ctrl-tarfile "$folder"/packages/libfacmsg0_*.deb | tar -t)
grep -qx "./shlibs" <<<"$control_files" || fail "libfacmsg0 does not tell other packages how to depend on it"
libraries=$(dirname "$(find "$root" -name libfacmsg.so)")
example=$root/usr/share/doc/libfacmsg-dev/examples/minimal_host.c
! grep -rlF "$source" "$root" || fail "these files name the builder's folders"

cmake -S "$source/tests/install/host" -B "$folder/host" -DCMAKE_C_COMPILER="$compiler" -DEXAMPLE="$example" \
    -DCMAKE_PREFIX_PATH="$root/usr" ${4:+-DCMAKE_LIBRARY_ARCHITECTURE="$(basename "$libraries")"} >/dev/null
cmake --build "$folder/host" >/dev/null
run_host "$folder/host/host"

export PKG_CONFIG_LIBDIR=$libraries/pkgconfig
# shellcheck disable=SC2046 # its words are arguments
"$compiler" -std=c99 -Wall -Wextra -Wpedantic -Werror $(pkg-config --cflags facmsg) "$example" -o "$folder/host_2" \
    $(pkg-config --libs facmsg)
run_host "$folder/host_2"

cmake --install "$build" --prefix "$folder/local" >/dev/null
[ -x "$folder/local/bin/facmsg-station" ] || fail "cmake --install leaves no station"
boards=$("${runner[@]}" "$folder/local/bin/facmsg-simhost" --list-boards)
grep -q '^healthy-28 ' <<<"$boards" || fail "the boards are not found: $boards"
