#!/usr/bin/env bash
# Lists the annotations of an archive, one a line, as paths below it.
#
#   list.sh ARCHIVE [NOT_TAKEN]
#
# Products of TerraSAR-X's sister satellites have the same form and names of their own.
# NOT_TAKEN becomes the list of the others: XML files of the same root element under any other name.
set -euo pipefail
export LC_ALL=C

archive=${1:?usage: list.sh ARCHIVE [NOT_TAKEN]}
not_taken=${2:+$(realpath "$2")}
templates=$(gridkit formats --json | jq -r '.[].template')
names=()
while IFS= read -r template; do
  names+=(-o -name "$template")
  if [[ $template == TSX1* ]]; then
    names+=(-o -name "TDX1${template#TSX1}" -o -name "PAZ1${template#TSX1}")
  fi
done <<<"$templates"

cd "$archive"
if [[ -n $(find . -name $'*\n*' -print -quit) ]]; then
  echo "list.sh: $archive: a name in it has a line feed, which a list of lines cannot hold" >&2
  exit 1
fi
find . -type f \( "${names[@]:1}" \) -printf '%P\n' | sort

if [[ -n $not_taken ]]; then
  find . -type f -iname '*.xml' ! \( "${names[@]:1}" \) -printf '%P\0' |
    xargs -0 -r grep -l --max-count=1 '<level1Product[ />]' -- | sort >"$not_taken" || true
fi
