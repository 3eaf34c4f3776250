#!/usr/bin/env bash
# A table and quicklooks of all products of an archive, with a Slurm array of COUNT tasks.
#
#   submit.sh ARCHIVE OUTPUT COUNT [OPTION OF SBATCH]...
#
# ARCHIVE, OUTPUT and this folder lie where every node sees them. Waits for the table. Run again, it
# goes on where it ended.
set -euo pipefail

archive=$(realpath "${1:?usage: submit.sh ARCHIVE OUTPUT COUNT [OPTION OF SBATCH]...}")
mkdir -p "${2:?usage: submit.sh ARCHIVE OUTPUT COUNT [OPTION OF SBATCH]...}/logs"
output=$(realpath "$2")
count=${3:?usage: submit.sh ARCHIVE OUTPUT COUNT [OPTION OF SBATCH]...}
shift 3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

"$here/list.sh" "$archive" "$output/not_taken.txt" >"$output/products.txt"
array=$(sbatch --parsable --array="1-$count" --export="ALL,PIPELINES=$here" \
  --output="$output/logs/%A_%a.txt" "$@" "$here/array.sbatch" "$archive" "$output")
# The table is made whatever became of the tasks: it tells what is undone.
sbatch --wait --dependency="afterany:${array%%;*}" --output="$output/logs/table.txt" "$@" \
  --wrap="$(printf '%q %q' "$here/table.sh" "$output")" >/dev/null || status=$?
cat "$output/logs/table.txt"
exit "${status:-0}"
