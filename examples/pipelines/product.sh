#!/usr/bin/env bash
# One product of an archive: leaves its record and its quicklook, or why it was refused.
#
#   product.sh ARCHIVE OUTPUT ANNOTATION
#
# ANNOTATION is a path below ARCHIVE. What belongs to A/B.xml is
#   OUTPUT/records/A/B.json and OUTPUT/quicklooks/A/B.png, or OUTPUT/refused/A/B.txt
# A product that has one of them, newer than its annotation, is passed by. Exit status 0: one of them
# is there now. Any other: neither is, and the next run tries again.
set -euo pipefail

archive=${1:?usage: product.sh ARCHIVE OUTPUT ANNOTATION}
output=${2:?usage: product.sh ARCHIVE OUTPUT ANNOTATION}
path=${3:?usage: product.sh ARCHIVE OUTPUT ANNOTATION}

name=${path%.*}
annotation=$archive/$path
record=$output/records/$name.json
picture=$output/quicklooks/$name.png
refusal=$output/refused/$name.txt
[[ $record -nt $annotation || $refusal -nt $annotation ]] && exit 0

rm -f "$record" "$picture" "$refusal"
mkdir -p "${record%/*}" "${picture%/*}" "${refusal%/*}" "$output/work"
work=$(mktemp -d "$output/work/XXXXXX")
trap 'rm -rf "$work"' EXIT

# step FILE COMMAND...: what the command prints, as FILE. A refusal is kept and ends the work here.
step() {
  local file=$work/$1 status=0
  shift
  "$@" >"$file" 2>>"$work/messages" || status=$?
  ((status == 0)) && return
  if ((status == 1)); then
    mv "$work/messages" "$refusal"
    exit 0
  fi
  cat "$work/messages" >&2
  echo "product.sh: $path: $1 ended with status $status" >&2
  exit "$status"
}

step check.json tsx-annotation check --json --images "$annotation"
step info.json gridkit info --json "$annotation"
step view.json tsx-annotation view --json "$annotation"
step output gridkit quicklook --quiet --size 512 "$annotation" "$work/picture.png"
read -r line sample < <(jq -r '.layers[0] | "\((.height - 1) / 2) \((.width - 1) / 2)"' "$work/info.json")
step centre.json gridkit locate --json "$annotation" "$line" "$sample"

jq -n --arg product "$path" --slurpfile check "$work/check.json" --slurpfile info "$work/info.json" \
  --slurpfile view "$work/view.json" --slurpfile centre "$work/centre.json" \
  '{product: $product, check: $check[0][0], info: $info[0], view: $view[0], centre: $centre[0]}' \
  >"$work/record.json"
# The record comes last and whole, so it tells that all is there.
mv "$work/picture.png" "$picture"
mv "$work/record.json" "$record"
