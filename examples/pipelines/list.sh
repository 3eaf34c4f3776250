#!/usr/bin/env bash
# Lists the annotations of an archive, one a line, as paths below it.
#
#   list.sh ARCHIVE
set -euo pipefail
export LC_ALL=C

archive=${1:?usage: list.sh ARCHIVE}
templates=$(gridkit formats --json | jq -r '.[].template')
names=()
while IFS= read -r template; do
  names+=(-o -name "$template")
done <<<"$templates"

cd "$archive"
if [[ -n $(find . -name $'*\n*' -print -quit) ]]; then
  echo "list.sh: $archive: a name in it has a line feed, which a list of lines cannot hold" >&2
  exit 1
fi
find . -type f \( "${names[@]:1}" \) -printf '%P\n' | sort
