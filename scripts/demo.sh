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

# Real prices of one share over some months, as a plotting library's examples hold them.
prices=/usr/share/matplotlib/mpl-data/sample_data/msft.csv
need_packages "${KALVENTO_PACKAGES_BUILD[@]}" python-matplotlib-data
# Warnings of a compiler that we don't know are no reason to end here.
build demo release -DKALVENTO_TESTS=OFF -DKALVENTO_BENCH=OFF -DKALVENTO_WERROR=OFF -- kalvento file_provider console_consumer

PATH="$KALVENTO_TOP/build/demo/apps/kalvento:$PATH"
# The program keeps templates of windows among the user's documents; here they stay below build/, too.
export HOME="$KALVENTO_TOP/build/demo/home"
unset XDG_CONFIG_HOME
mkdir -p build/demo/files "$HOME"
cd build/demo/files
rm -rf -- *

say() { printf '\n\033[1m%s\033[0m\n' "$*"; }
# Shows a command as you would type it, then runs it.
run() {
    printf '\033[36m$ %s\033[0m\n' "$*"
    eval "$*"
}
[ -t 1 ] || { say() { printf '\n# %s\n' "$*"; }; run() { printf '$ %s\n' "$*"; eval "$*"; }; }

say "1. Trades. An invented exchange, the same for the same seed on every machine:"
run "kalvento generate --rows 200000 --sessions 3 --seed 7 --output ticks.csv"
run "head -n 4 ticks.csv"

say "2. Candles. Every interval from ticks to years; a candle bears the begin of its window:"
run "kalvento candles ticks.csv --interval 2h --format table"

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
run "kalvento prove ticks.csv -i 5min -i 1h"

say "9. Which rows made a candle, and which of them gave each value?"
run "kalvento explain ticks.csv -i 5min --at 10:05 --rows 4"

say "10. Plug-ins. One serves a folder of files and plays a recorded day back, another shows it as it is traded:"
run "mkdir market && cp ticks.csv market/KALV.csv"
run "kalvento watch --list --folder market"
run "kalvento watch KALV --folder market --start 10:59:56 --speed 4 -i 1h --plain --candles 2 | head -n 12"
say "Without --plain that is a screen with chart, order book and trades; try it:"
echo "build/demo/apps/kalvento/kalvento watch KALV --folder build/demo/files/market --start 10:59 -i 1min"

if [ -r "$prices" ]; then
    say "11. Real prices: a share by days, newest first and in a form of its own, becomes months:"
    run "head -n 3 $prices"
    # The months' names become numbers, and the order turns around.
    run "(echo date,open,high,low,close,volume; tail -n +2 $prices | tac |
    awk -F'[-,]' -v OFS=, '{ m = (index(\"JanFebMarAprMayJunJulAugSepOctNovDec\", \$2) + 2) / 3
        print sprintf(\"20%s-%02d-%02d\", \$3, m, \$1), \$4, \$5, \$6, \$7, \$8 }') > share.csv"
    run "kalvento check share.csv"
    run "kalvento candles share.csv -i 1mo --format table"
fi

say "That was the road. The files lie in build/demo/files; go on with: build/demo/apps/kalvento/kalvento --help"
