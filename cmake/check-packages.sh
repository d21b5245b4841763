#!/usr/bin/env bash
# Installs the Debian packages of a folder on a bare system in a folder of its own, runs the tool there and builds
# examples/consumer. Needs root, mmdebstrap and a Debian mirror; the bare system is of this machine's release.
#
#   check-packages.sh FOLDER
set -euo pipefail
packages=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

there() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"; }
install_there() {
  there apt-get install -y -qq --no-install-recommends "$@" >"$root/apt.log" 2>&1 || { cat "$root/apt.log"; exit 1; }
}

# deb PATTERN: the package of that name, as the bare system has it.
deb() { (cd "$packages" && printf '/tmp/%s' $1_*.deb); }

# picture SHIFT: a grey image of random squares, seen SHIFT pixels further right.
picture() {
  awk -v shift="$1" 'BEGIN {
    srand(1)
    for (i = 0; i < 48 * 40; ++i) square[i] = int(256 * rand())
    print "P2 320 240 255"
    for (y = 0; y < 240; ++y) for (x = 0; x < 320; ++x) print square[int(y / 8) * 48 + int((x + shift) / 8)]
  }'
}

echo "A bare $release"
mmdebstrap --quiet --variant=apt "$release" "$root"
there apt-get update -qq
cp "$packages"/*.deb "$root/tmp"
cp -r examples/consumer "$root/tmp"
picture 0 > "$root/tmp/a.pgm"
picture 5 > "$root/tmp/b.pgm"

echo "Library and tool"
install_there "$(deb "libmirelalgorithms[0-9]*")" "$(deb mirel)"
there mirel --version
there mirel track /tmp/a.pgm /tmp/b.pgm --out /tmp/out
test -s "$root/tmp/out/report.html"
test -s "$root/usr/share/man/man1/mirel.1.gz"
test -s "$root/usr/share/bash-completion/completions/mirel"

echo "Development files"
install_there "$(deb libmirelalgorithms-dev)" g++ cmake make
there cmake -S /tmp/consumer -B /tmp/consumer/build >/dev/null
there cmake --build /tmp/consumer/build
there /tmp/consumer/build/match_two_frames /tmp/a.pgm /tmp/b.pgm
