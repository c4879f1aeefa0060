#!/usr/bin/env bash
# Builds the command-line tool and its plug-ins and takes you along the whole road in a minute: trades, candles, stored
# blocks, live candles, the proof that all of them agree, and a recorded day played back through plug-ins.
# Needs nothing but this tree and Debian's packages (see setup-common), and writes only below build/.
#
#   scripts/demo.sh
# shellcheck source-path=SCRIPTDIR source=setup-common
source "$(dirname "${BASH_SOURCE[0]}")/setup-common"

case "${1:-}" in
    "") ;;
    -h | --help) sed -n '2,6s/^# \{0,1\}//p' scripts/demo.sh; exit 0 ;;
    *) fail "takes no arguments" ;;
esac

need_packages "${KALVENTO_PACKAGES_BUILD[@]}"
# Warnings of a compiler that we don't know are no reason to end here.
build demo release -DKALVENTO_TESTS=OFF -DKALVENTO_BENCH=OFF -DKALVENTO_WERROR=OFF -- kalvento file_provider console_consumer

PATH="$KALVENTO_TOP/build/demo/apps/kalvento:$PATH"
# The program keeps templates of windows among the user's documents; here they stay below build/, too.
export HOME="$KALVENTO_TOP/build/demo/home"
unset XDG_CONFIG_HOME
mkdir -p build/demo/files "$HOME"
cd build/demo/files
rm -rf -- *
cp -r "$KALVENTO_TOP"/examples/market/{ticks,daily} .

say() { printf '\n\033[1m%s\033[0m\n' "$*"; }
# Shows a command as you would type it, then runs it.
run() {
    printf '\033[36m$ %s\033[0m\n' "$*"
    eval "$*"
}
[ -t 1 ] || { say() { printf '\n# %s\n' "$*"; }; run() { printf '$ %s\n' "$*"; eval "$*"; }; }

say "1. Trades of a real day, and candles of them. There is every interval from ticks to years; a candle bears the begin of its window:"
run "head -n 4 ticks/mtgox_btcusd_2013-01-01.csv"
run "kalvento candles ticks/mtgox_btcusd_2013-01-01.csv --interval 4h --format table --quiet"

say "2. More of them: an invented exchange, the same for the same seed on every machine:"
run "kalvento generate --rows 200000 --sessions 3 --seed 7 --output ticks.csv"
run "head -n 4 ticks.csv"
run "kalvento candles ticks.csv --interval 4h --format table"

say "3. Polish words work as well, and the volume of all candles is the volume of all trades:"
run "kalvento candles ticks.csv --interval Dzienny"
run "awk -F, '{ sum += \$3 } END { print \"volume of the trades\", sum }' ticks.csv"

say "4. Short candles fold on into longer ones, through pipes, from text or from a stored block:"
run "kalvento candles ticks.csv -i 1min --format block -o minutes.block"
run "kalvento show minutes.block --rows 2"
run "kalvento candles minutes.block -i 4h --format table"

say "5. Is a file sound? A block loses its last bytes on the way:"
run "kalvento check minutes.block"
run "head -c 5000 minutes.block > damaged.block"
run "kalvento check damaged.block 2>/dev/null || echo \"exit code \$?\""

say "6. A line that can't be read is told by its place, with what would be accepted:"
run "(head -n 3 ticks.csv; echo '2024-01-02 09:00:01,one hundred,5') > typo.csv"
run "kalvento candles typo.csv -i 1min || echo \"exit code \$?\""

say "7. Live. A file grows while we look; each change is told, the last candle stays open:"
run "head -n 2000 ticks.csv > feed.csv"
run "(for n in 2001 2002 2003 2004; do sleep 0.3; sed -n \"\${n}p\" ticks.csv; done >> feed.csv) &"
run "kalvento live feed.csv --interval 5min --history 2 --idle-exit 2"
wait

say "8. One fold of the past, row by row, or live rows that take over anywhere: the same candles, bit for bit?"
run "kalvento prove ticks/binance_spot_btcusdt_2024-08-08_midnight.csv -i 1min -i 1h --quiet"

say "9. Which rows made a candle, and which of them gave each value?"
run "kalvento explain ticks.csv -i 5min --at 10:05 --rows 4"

say "10. Corporate operations. A real share was split 7 for 1 on 9 June 2014; as it was traded, and on one scale:"
run "cut -d, -f1-6 daily/aapl_2014.csv > share.csv"
run "kalvento candles share.csv --from 2014-06-04 --to 2014-06-11 -i 1d --format table"
run "cat daily/operations_aapl.txt"
run "kalvento candles share.csv --from 2014-06-04 --to 2014-06-11 -i 1d --format table --operations daily/operations_aapl.txt"

say "11. Plug-ins. One serves a folder of files and plays a recorded day back, another shows it as it is traded:"
run "mkdir market && cp ticks/coinbase_btcusd_2023-09-05_16h.csv market/BTCUSD.csv"
run "kalvento watch --list --folder market"
run "kalvento watch BTCUSD --folder market --start 16:29:55 --speed 4 -i 30min --plain --candles 2 | head -n 12"
say "A book is shown where one was given. The invented exchange writes one beside its trades:"
run "mkdir invented && kalvento generate --rows 20000 --seed 7 --book --output invented/DEMO.csv"
run "head -n 2 invented/DEMO.book.csv | cut -d, -f1-7"
run "kalvento watch DEMO --folder invented --start 17:00 --speed 0 -i 1d --plain --book --idle-exit 1"
say "Without --plain that is a screen with chart, order book and trades; try it:"
echo "build/demo/apps/kalvento/kalvento watch DEMO --folder build/demo/files/invented --start 12:00 -i 1min"

say "That was the road. The files lie in build/demo/files; go on with: build/demo/apps/kalvento/kalvento --help"
