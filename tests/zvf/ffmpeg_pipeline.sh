#!/usr/bin/env bash
# zvf in a real pipeline: FFmpeg's test source as Y4M 4:2:2 through
# `zvf render` and back into FFmpeg; the frame count must hold and the frames
# must equal a render of the same frames through the host kit alone.
# Usage: ffmpeg_pipeline.sh ZVF ZVF_REFERENCE
set -euo pipefail
zvf=$1
ref=$2
if ! command -v ffmpeg >/dev/null 2>&1; then
  echo "SKIP: ffmpeg is not installed"
  exit 77
fi
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
w=320 h=240 n=12
ff() { ffmpeg -nostdin -hide_banner -loglevel error "$@"; }
source_y4m() {  # the interlaced, top-field-first test source on stdout
  ff -f lavfi -i "testsrc2=size=${w}x${h}:rate=25" -frames:v $n -vf setfield=tff -pix_fmt yuv422p \
     -f yuv4mpegpipe -strict -1 -
}
source_y4m | ff -f yuv4mpegpipe -i - -f rawvideo -pix_fmt yuyv422 "$tmp/in.yuyv"

failures=0
check() {  # label, filters...
  local label=$1
  shift
  source_y4m | "$zvf" render -i - -o - "$@" >"$tmp/$label.y4m"
  head -n1 "$tmp/$label.y4m" | grep -q " It " || { echo "FAIL $label: interlace tag lost"; failures=$((failures + 1)); }
  ff -f yuv4mpegpipe -i "$tmp/$label.y4m" -f rawvideo -pix_fmt yuyv422 "$tmp/$label.yuyv"
  local frames=$(($(stat -c %s "$tmp/$label.yuyv") / (w * h * 2)))
  "$ref" $w $h "$tmp/in.yuyv" "$tmp/$label.ref" "$@"
  if [ "$frames" -ne "$n" ]; then
    echo "FAIL $label: $frames frames, expected $n"
    failures=$((failures + 1))
  elif ! cmp -s "$tmp/$label.yuyv" "$tmp/$label.ref"; then
    echo "FAIL $label: frames differ from the host kit's render"
    failures=$((failures + 1))
  else
    echo "ok   $label: $frames frames equal the host kit's render"
  fi
}

# No filter: FFmpeg's planar frames, packed and unpacked, come back unchanged.
check copy
# Block Color from a saved blob: a known colour in every field.
"$zvf" blob save "Block Color:y=180:u=40:v=200" -o "$tmp/colour.blob"
check block-colour "Block Color@$tmp/colour.blob"
# Every other filter that renders, in registration order, with its defaults.
mapfile -t others < <("$ref" --built | grep -v SolidColor)
if [ ${#others[@]} -gt 0 ]; then
  check chain "${others[@]}"
fi

# The reader going away mid-stream is a clean end, not a failure.
set +o pipefail
source_y4m 2>/dev/null | "$zvf" render -i - -o - | head -c 1000 >/dev/null
status=${PIPESTATUS[1]}
set -o pipefail
if [ "$status" -ne 0 ]; then
  echo "FAIL: zvf exited with $status when its reader went away"
  failures=$((failures + 1))
fi
[ "$failures" -eq 0 ]
