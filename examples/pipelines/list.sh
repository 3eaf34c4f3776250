#!/usr/bin/env bash
# Lists the annotations of an archive, one a line, as paths below it.
#
#   list.sh ARCHIVE [NOT_TAKEN]
#
# NOT_TAKEN becomes the list of the others: XML files of the same root element that none of the formats
# knows by name, as those of a sister mission.
set -euo pipefail
export LC_ALL=C

archive=${1:?usage: list.sh ARCHIVE [NOT_TAKEN]}
not_taken=${2:+$(realpath "$2")}
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

if [[ -n $not_taken ]]; then
  find . -type f -iname '*.xml' ! \( "${names[@]:1}" \) -printf '%P\0' |
    xargs -0 -r grep -l --max-count=1 '<level1Product[ />]' -- | sort >"$not_taken" || true
fi
