# The life of the packages in a system: this machine's own, seen through an overlay that takes in every
# change. Run as root in a mount namespace of its own, with which all mounts end.
#
#   in_overlay.sh DEBS RESULTS SOURCE BUILD
set -euo pipefail
debs=$1 results=$2 source=$3 build=$4

layers=$results/layers
mkdir "$layers"
mount -t tmpfs tmpfs "$layers"
mkdir "$layers"/{changes,work,system}
mount -t overlay overlay -o "lowerdir=/,upperdir=$layers/changes,workdir=$layers/work" "$layers/system"
system=$layers/system
mount --rbind /dev "$system/dev"
mount --rbind /proc "$system/proc"
mount -t tmpfs tmpfs "$system/mnt"
cp "$debs"/*.deb "$system/mnt"
mkdir "$system/mnt/documents"
(cd "$source" && cp -r --parents README.md docs scripts/demo tests/docs tests/packaging/install_test.py "$system/mnt/documents")
# Nothing of the source or the build is in sight.
for folder in "$source" "$build"; do
  if [ -d "$system$folder" ]; then mount -t tmpfs tmpfs "$system$folder"; fi
done

in_system() {
  chroot "$system" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    DEBIAN_FRONTEND=noninteractive HOME=/mnt "$@"
}

in_system sh -c 'dpkg --install /mnt/*.deb' >"$results/install" 2>&1 || { cat "$results/install" >&2; exit 1; }

# As a user.
annotation=$(in_system tsx-simulate /mnt/product --lines 64 --samples 80)
in_system gridkit info --json "$annotation" >"$results/info.json"
in_system tsx-annotation check --json "$annotation" >"$results/check.json"
in_system ldd /usr/bin/gridkit | sed -n 's/.*=> \(.*libgridkit.*\) (.*/\1/p' >"$results/library"

# By copy and paste from the documents.
in_system python3 -B /mnt/documents/tests/docs/commands_test.py /usr /mnt/shown /mnt/documents >"$results/documents" 2>&1 ||
  true # its last line tells how it went
in_system man -w gridkit-read >"$results/man"
in_system /usr/bin/python3 -B -c '
import sys, gridkit, xarray
with xarray.open_dataset(sys.argv[1], engine="gridkit") as dataset:
    print(gridkit.__file__, dataset.samples.load().dtype)' "$annotation" >"$results/python"

# As a programmer.
in_system pkg-config --cflags gridkit >"$results/cflags"
in_system sh -euc '
  cd /mnt
  examples=$(pkg-config --variable=examplesdir gridkit)
  flags="-std=c++20 $(pkg-config --cflags gridkit)"
  g++ $flags "$examples/embed/embed.cpp" -o embed $(pkg-config --libs gridkit)
  mkdir plugins
  g++ $flags -shared -fPIC "$examples/pgm/pgm.cpp" -o plugins/pgm.so $(pkg-config --libs gridkit)'
in_system sh -euc '
  cd /mnt
  g++ -std=c++20 $(pkg-config --cflags tsx-annotation) \
    "$(pkg-config --variable=examplesdir tsx-annotation)/annotation/remark.cpp" -o remark $(pkg-config --libs tsx-annotation)'
in_system /mnt/remark "$annotation" /mnt/remarked.xml seen >"$results/remark"
in_system /mnt/embed "$annotation" X_HH_PHASE_2 >"$results/embed"
in_system gridkit --plugins /mnt/plugins formats >"$results/formats"

# And off again, one by one: the library not before those that need it.
in_system dpkg --purge gdal-plugin-gridkit python3-gridkit gridkit-tsx-dev gridkit-tsx libgridkit-dev >>"$results/remove" 2>&1
in_system gridkit formats 2>"$results/no-plugin" && exit 1
in_system dpkg --purge libgridkit0 2>"$results/keep-library" && exit 1
in_system dpkg --purge gridkit-tools libgridkit0 >>"$results/remove" 2>&1

in_system dpkg-query --show --showformat '${Package}\n' >"$results/status"
# Whatever the overlay took in and the system did not have before.
cd "$layers/changes"
find . -mindepth 1 | cut -c 2- | while IFS= read -r path; do
  if [ ! -d "$layers/changes$path" ] || [ ! -d "$path" ]; then echo "$path"; fi
done >"$results/left"
