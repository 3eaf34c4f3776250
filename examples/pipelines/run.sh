#!/usr/bin/env bash
# A table and quicklooks of all products of an archive, with GNU parallel on one machine.
#
#   run.sh ARCHIVE OUTPUT [JOBS]
#
# JOBS products at once; one a processor where nothing is said. Run again, it goes on where it ended.
set -euo pipefail

archive=${1:?usage: run.sh ARCHIVE OUTPUT [JOBS]}
output=${2:?usage: run.sh ARCHIVE OUTPUT [JOBS]}
jobs=${3:-100%}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

mkdir -p "$output"
"$here/list.sh" "$archive" "$output/not_taken.txt" >"$output/products.txt"
# What it counts as failed is what table.sh finds undone.
parallel --will-cite --quote --jobs "$jobs" --joblog "$output/jobs.tsv" --arg-file "$output/products.txt" \
  "$here/product.sh" "$archive" "$output" || true
"$here/table.sh" "$output"
