#!/bin/sh
# The Debian package as a machine meets it, without being root: unpacked into a folder, set up, used, removed, purged.
# Usage: debian_package.sh FOLDER_OF_THE_PACKAGE SCRATCH_FOLDER
set -eu
fail() { echo "$*"; exit 1; }

package=$(ls "$1"/kalvento_*.deb)
rm -rf "$2"
mkdir -p "$2"
dpkg-deb -x "$package" "$2/root"
dpkg-deb -e "$package" "$2/control"
# The variable is dpkg's own for installing below another folder than /.
export DPKG_ROOT="$2/root"
export HOME="$2"

dpkg-deb -c "$package" | awk '$2 != "root/root" || ($1 !~ /^l/ && $1 !~ /^.rw[x-]r-[x-]r-[x-]$/)' | grep . &&
    fail "files of another owner, or that others may change or can't read"
dpkg-deb -f "$package" Depends | grep -q libtbb12 || fail "the libraries aren't named as dependencies"

"$2/control/postinst" configure
kalvento="$DPKG_ROOT/usr/bin/kalvento"
ldd "$(realpath "$kalvento")" | grep libKalventoCore | grep -qF "$DPKG_ROOT/opt/kalvento/" || fail "the library is another one"
"$kalvento" --version
"$kalvento" generate --rows 5000 --output "$2/ticks.csv"
"$kalvento" watch --list --folder "$2" | grep '^  ticks' || fail "the plug-in of files doesn't serve its folder"
"$kalvento" watch ticks --folder "$2" --speed 0 -i 1h --plain --idle-exit 2 >"$2/watched"
"$kalvento" candles "$2/ticks.csv" -i 1h | tail -n 1 | sed 's/^[^,]*,//; s/,/;/g' >"$2/last"
tail -n 1 "$2/watched" | cut -d ';' -f 4- | cmp - "$2/last" || fail "the last candle is another one"
[ -n "$(ls "$DPKG_ROOT/var/opt/kalvento/Data")" ] || fail "nothing was kept in the folder for what varies"

"$2/control/prerm" remove
"$2/control/postrm" remove
[ -d "$DPKG_ROOT/var/opt/kalvento/Data" ] || fail "what users wrote was removed before the package was purged"
"$2/control/postrm" purge
left=$(find "$DPKG_ROOT/var/opt" "$DPKG_ROOT/usr/bin" "$DPKG_ROOT/opt/kalvento" -maxdepth 1 -mindepth 1 \
    ! -name bin ! -name include ! -name lib ! -name plugins)
[ -z "$left" ] || fail "left behind: $left"
