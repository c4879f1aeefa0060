#!/bin/sh
# The Debian package as a machine meets it, without being root: unpacked into a folder, and used by somebody who may not
# write there.
# Usage: debian_package.sh FOLDER_OF_THE_PACKAGE SCRATCH_FOLDER
set -eu
fail() { echo "$*"; exit 1; }

package=$(ls "$1"/kalvento_*.deb)
chmod -R u+w "$2" 2>/dev/null || true
rm -rf "$2"
mkdir -p "$2"
dpkg-deb -x "$package" "$2/root"
export HOME="$2/home" XDG_DATA_HOME="$2/home/data"
mkdir -p "$XDG_DATA_HOME"

dpkg-deb -c "$package" | awk '$2 != "root/root" || ($1 !~ /^l/ && $1 !~ /^.rw[x-]r-[x-]r-[x-]$/)' | grep . &&
    fail "files of another owner, or that others may change or can't read"
dpkg-deb -f "$package" Depends | grep -q libtbb12 || fail "the libraries aren't named as dependencies"
if command -v lintian >/dev/null; then
    lintian --fail-on error --tag-display-limit 0 "$package" || fail "the package breaks the system's rules"
fi

chmod -R a-w "$2/root"
before=$(find "$2/root" | sort)
kalvento="$2/root/usr/bin/kalvento"
tree="$XDG_DATA_HOME/kalvento"
ldd "$(realpath "$kalvento")" | grep libKalventoCore | grep -qF "$2/root/usr/lib/kalvento/" || fail "the library is another one"
"$kalvento" --version
"$kalvento" generate --rows 5000 --output "$HOME/ticks.csv"
"$kalvento" watch --list --folder "$HOME" | grep '^  ticks' || fail "the plug-in of files doesn't serve its folder"
"$kalvento" watch ticks --folder "$HOME" --speed 0 -i 1h --plain --idle-exit 2 >"$2/watched"
"$kalvento" candles "$HOME/ticks.csv" -i 1h | tail -n 1 | sed 's/^[^,]*,//; s/,/;/g' >"$2/last"
tail -n 1 "$2/watched" | cut -d ';' -f 4- | cmp - "$2/last" || fail "the last candle is another one"
[ -n "$(ls "$tree/Data")" ] || fail "nothing was kept in the user's folder"
[ "$(realpath "$tree/plugins")" = "$2/root/usr/lib/kalvento/plugins" ] || fail "the user's tree leads to other plug-ins"
[ -z "$(find "$tree" ! -type l -perm /go+w)" ] || fail "others can write into the user's tree"
[ "$(find "$2/root" | sort)" = "$before" ] || fail "something was written where the package lies"
chmod -R u+w "$2/root"
