# Jobs through the installed library of build/bench, fed to its virtual scanner. Sourced after
# scripts/lib.sh.
# shellcheck shell=bash

apps="${top:?sourced after scripts/lib.sh}/build/bench/root/opt/apps"
library="$apps/orvascan/scanner/lib/OrvaSDK/libOrva_SDK.so"
scanner="$apps/orva/.tarvex-base/.virtual-scanner"
job="$top/build/bench/bench/bench_scan_job"

# The codes of the formats, by the names that the application shows them with.
declare -A format_codes=([jpg]=0 [bmp]=1 [png]=2 [tif]=3 [pdf]=4 [双层pdf]=5 [ofd]=6 [双层ofd]=7 [txt]=8 [rtf]=9 [xls]=10)

# load_tray FILE...: exactly these sheets, in this order
load_tray() {
  local number=0 file
  unload_tray
  mkdir -p "$scanner/tray" "$scanner/fed"
  for file in "$@"; do
    number=$((number + 1))
    ln -f "$file" "$scanner/tray/$(printf %06d "$number")-sheet.${file##*.}" 2>/dev/null \
      || cp "$file" "$scanner/tray/$(printf %06d "$number")-sheet.${file##*.}"
  done
}
unload_tray() { rm -rf "${scanner:?}/tray" "${scanner:?}/fed"; }

# run_job FORMAT pages|document WIDTH_MM HEIGHT_MM FOLDER [OPTION...]: JPEG quality is the job's
# default; prints the line of bench_scan_job
run_job() {
  local format=$1 kind=$2 width=$3 height=$4 folder=$5
  shift 5
  mkdir -p "$folder"
  mkdir -p "$top/build/bench/scratch/none"
  : >"$top/build/bench/scratch/none/dll.conf" # no other scanner
  SANE_CONFIG_DIR="$top/build/bench/scratch/none" "$job" scan "$library" Virtual ADF单面 1 \
    "${format_codes[$format]}" "$kind" "$width" "$height" "$folder" "$@"
}

# value NAME LINE: of "name=value" words
value() { sed -E "s/.*\b$1=([0-9.]+).*/\1/" <<<"$2"; }
calculate() { awk "BEGIN { printf \"$1\", $2 }"; }
median() { sort -g | awk '{ v[NR] = $1 } END { print NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
spread() { sort -g | awk 'NR == 1 { a = $1 } { b = $1 } END { printf "%.2f to %.2f", a, b }'; }
# holds A OP B: "yes" or "NO"
holds() { awk "BEGIN { print ($1 $2 $3) ? \"yes\" : \"NO\" }"; }
table_head() { printf '| Figure | Measured | Limit | Holds |\n|---|---|---|---|\n'; }

# keep_section TITLE FILE: puts it into bench/results.md in place of the section of that title, with
# the day and the load under which it was measured.
keep_section() {
  local results="$top/bench/results.md" new="$top/build/bench/scratch/results.md"
  awk -v title="## $1" '/^## / { skip = $0 == title } !skip' "$results" >"$new"
  { cat -s "$new"; printf '\n## %s\n\nMeasured on %s; load average %s at the end.\n\n' "$1" "$(date -u +%F)" \
    "$(cut -d' ' -f1 /proc/loadavg)"; cat "$2"; } >"$results"
  cat "$2"
}
