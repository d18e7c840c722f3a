#!/usr/bin/env bash
# Our filters through the loaded module against FFmpeg's nearest equivalents,
# on frames of the same size, one thread each, measured in one run.
# FFmpeg works on yuv422p (its fastest layout for these filters) and is timed
# with its own bench filter around the filter alone, so decoding and I/O are
# not counted; our side is module_bench's ms per frame (both fields, one
# thread, packed 4:2:2).
#
#   bash bench/ffmpeg_compare.sh [frames]      (default 60)
#
# Prints one row per pair: our ms per frame, FFmpeg's median ms per frame and
# ours over theirs (below 1 means we are faster).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
frames=${1:-60}
build=$root/build/bench
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

command -v ffmpeg >/dev/null || { echo "ffmpeg is not installed (apt-get install ffmpeg)" >&2; exit 1; }
cmake -G Ninja -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DZVF_TESTS=OFF >/dev/null
ninja -C "$build" module_bench >/dev/null

# Our filter name | FFmpeg filter chain. Parameters are chosen to do the same
# amount of work as our default records where the two differ in kind.
pairs=(
  "Block Color|lutyuv=y=128:u=128:v=128"
  "Mirror|hflip"
  "Blur|gblur=sigma=2:steps=1"
  "Smooth Blur|gblur=sigma=2:steps=1"
  "Matrix|convolution=0 -1 0 -1 5 -1 0 -1 0:0 -1 0 -1 5 -1 0 -1 0:0 -1 0 -1 5 -1 0 -1 0:0 -1 0 -1 5 -1 0 -1 0"
  "Emboss|convolution=-2 -1 0 -1 1 1 0 1 2:-2 -1 0 -1 1 1 0 1 2:-2 -1 0 -1 1 1 0 1 2:-2 -1 0 -1 1 1 0 1 2"
  "Video Noise|noise=alls=20:allf=t"
  "Color Balance|eq=brightness=0.05:contrast=1.1:saturation=1.2"
  "Color Balance|colorbalance=rs=0.1:gm=-0.1:bh=0.1"
  "Color Wheel|hue=h=30:s=1.2"
  "YUV Curve|lutyuv=y=val*1.1:u=val:v=val"
  "Monotone|hue=s=0"
  "Monotone|lutyuv=u=128:v=128"
)

# Our side: every built filter, one run, JSON out.
"$build/bin/module_bench" --benchmark_format=json --benchmark_min_time=0.5 >"$work/ours.json" 2>/dev/null

ours_ms() {  # name size -> ms per frame, or empty when the filter is not built
  python3 - "$work/ours.json" "$1/$2" <<'PY'
import json, sys
data = json.load(open(sys.argv[1]))
for b in data["benchmarks"]:
    if b["name"].startswith(sys.argv[2] + "/") and "ms_per_frame" in b:
        print("%.3f" % b["ms_per_frame"])
        break
PY
}

theirs_ms() {  # size chain -> median ms per frame of the chain alone
  local src=$work/$1.yuv
  ffmpeg -hide_banner -nostdin -threads 1 -filter_threads 1 -f rawvideo -pix_fmt yuv422p -s "$1" -i "$src" \
    -vf "bench=start,$2,bench=stop" -f null - 2>&1 |
    sed -n 's/.*\[bench @ [^]]*\] t:\([0-9.]*\).*/\1/p' |
    tail -n +3 | sort -n | awk '{ v[NR] = $1 } END { if (NR) printf "%.3f\n", v[int((NR + 1) / 2)] * 1000 }'
}

printf '%-14s %-9s %9s  %-44s %9s %8s\n' filter size ours_ms ffmpeg_filter ffmpeg_ms ratio
for size in 1920x1080 3840x2160; do
  label=$([ "$size" = 1920x1080 ] && echo 1080p || echo 2160p)
  ffmpeg -hide_banner -nostdin -loglevel error -f lavfi -i "testsrc2=size=$size:rate=25" -frames:v "$frames" \
    -pix_fmt yuv422p -f rawvideo -y "$work/$size.yuv"
  for pair in "${pairs[@]}"; do
    name=${pair%%|*}
    chain=${pair#*|}
    ours=$(ours_ms "$name" "$label")
    [ -n "$ours" ] || continue
    theirs=$(theirs_ms "$size" "$chain")
    ratio=$(awk -v a="$ours" -v b="$theirs" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "-" }')
    printf '%-14s %-9s %9s  %-44.44s %9s %8s\n' "$name" "$label" "$ours" "$chain" "$theirs" "$ratio"
  done
  rm -f "$work/$size.yuv"
done
