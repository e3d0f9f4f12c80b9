#!/bin/sh
# Builds the fuzz targets with clang and runs them: three quarters of the time on invoices, the rest on spreadsheets.
#   tests/fuzz/run.sh MINUTES [FOLDER]    further seeds are taken from FOLDER
#   tests/fuzz/run.sh --keep              writes the smallest set of inputs with the same coverage to tests/fuzz/corpus
# Findings are written to build/fuzz/findings; the exit code says whether there are any.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
work=$root/build/fuzz
export ASAN_OPTIONS=allocator_may_return_null=1 UBSAN_OPTIONS=print_stacktrace=1

run() { # target kind seconds dictionary
    mkdir -p "$work/corpus/$2" "$work/findings/$2"
    nice -n 19 "$work/bin/$1" -max_total_time="$3" -timeout=20 -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 \
        -dict="$here/$4" -artifact_prefix="$work/findings/$2/" "$work/corpus/$2" "$here/corpus/$2"
}

keep() { # target kind longest
    rm -rf "$work/all/$2" "$work/kept/$2"
    mkdir -p "$work/all/$2" "$work/kept/$2" "$here/corpus/$2"
    find "$here/corpus/$2" "$work/corpus/$2" -type f -exec cp {} "$work/all/$2/" \;
    # By branches alone: how often each is taken would keep four times as much. Long inputs are cut.
    nice -n 19 "$work/bin/$1" -merge=1 -use_counters=0 -max_len="$3" -timeout=20 "$work/kept/$2" "$work/all/$2"
    rm -f "$here/corpus/$2"/*
    cp "$work/kept/$2"/* "$here/corpus/$2/"
}

# The parts of a workbook one after the other, as SheetInput.h describes.
parts() {
    printf 'PARTS\036'
    for part in xl/workbook.xml xl/_rels/workbook.xml.rels xl/styles.xml xl/sharedStrings.xml xl/worksheets/sheet1.xml; do
        unzip -p "$1" "$part" 2>/dev/null || true
        printf '\036'
    done
}

seed() {
    mkdir -p "$work/corpus/fattura" "$work/corpus/sheet" "$here/corpus/fattura" "$here/corpus/sheet"
    for folder in "$root/samples" "$@"; do
        find "$folder" -type f \( -iname '*.xml' -o -iname '*.p7m' \) -size -64k -exec cp {} "$work/corpus/fattura/" \;
        find "$folder" -type f -iname '*.xls' -size -64k -exec cp {} "$work/corpus/sheet/" \;
        find "$folder" -type f -iname '*.xlsx' -size -64k | while read -r book; do
            cp "$book" "$work/corpus/sheet/"
            parts "$book" >"$work/corpus/sheet/$(basename "$book").parts"
        done
    done
}

if [ $# -lt 1 ]; then
    sed -n '2,5s/^# //p' "$0"
    exit 2
fi
if [ ! -x "$work/bin/FuzzFattura" ] || [ "${1:-}" != --keep ]; then
    (cd "$root" && cmake --preset fuzz >/dev/null && cmake --build --preset fuzz)
fi
if [ "$1" = --keep ]; then
    keep FuzzFattura fattura 3000
    keep FuzzSheet sheet 8192 # a compound file has a header and sectors to fill
    du -sh "$here/corpus"
    exit 0
fi
minutes=$1
shift
seed "$@"
run FuzzFattura fattura $((minutes * 45)) fatturapa.dict
run FuzzSheet sheet $((minutes * 15)) sheet.dict
if find "$work/findings" -type f | grep -q .; then
    echo "Trovati casi in $work/findings" >&2
    exit 1
fi
