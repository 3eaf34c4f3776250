#!/usr/bin/env bash
# Puts the records of all products into OUTPUT/table.csv and the refusals into OUTPUT/refused.tsv, in
# the order of OUTPUT/products.txt.
#
#   table.sh OUTPUT
#
# OUTPUT/not_taken.txt, where there is one, is counted. Exit status 1 when a product is in neither, as one that a run was stopped at.
set -euo pipefail

output=${1:?usage: table.sh OUTPUT}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d "$output/table.XXXXXX")
trap 'rm -rf "$work"' EXIT
touch "$work"/{records,refused.tsv,undone.txt}

while IFS= read -r path; do
  name=${path%.*}
  if [[ -e $output/records/$name.json ]]; then
    printf '%s\0' "$output/records/$name.json" >>"$work/records"
  elif [[ -e $output/refused/$name.txt ]]; then
    printf '%s\t%s\n' "$path" "$(head -n 1 "$output/refused/$name.txt")" >>"$work/refused.tsv"
  else
    printf '%s\n' "$path" >>"$work/undone.txt"
  fi
done <"$output/products.txt"

{
  echo "product,variant,polarisations,start,look,lines,samples,line_spacing_m,sample_spacing_m,latitude,longitude,average_height_m,projection,calibration_factor,layers,findings"
  xargs -0 -r jq -r -f "$here/table.jq" <"$work/records"
} >"$work/table.csv"
mv "$work"/{table.csv,refused.tsv,undone.txt} "$output"

rows=$(($(wc -l <"$output/table.csv") - 1))
refused=$(wc -l <"$output/refused.tsv")
undone=$(wc -l <"$output/undone.txt")
summary="$(wc -l <"$output/products.txt") products: $rows in table.csv, $refused in refused.tsv, $undone in undone.txt"
if [[ -s $output/not_taken.txt ]]; then
  summary+="; other annotations, of no format that is read: $(wc -l <"$output/not_taken.txt") in not_taken.txt"
fi
echo "$summary"
((undone == 0))
