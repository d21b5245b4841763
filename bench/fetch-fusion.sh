#!/usr/bin/env bash
# Fetches the C sources of x-io's Fusion (MIT licence), a peer of the attitude filter in the benchmarks.
#
#     fetch-fusion.sh TARGET_FOLDER
#
# They are taken from its source distribution for Python, whose SHA-256 is pinned here. TARGET_FOLDER is there whole or
# not at all; one that exists is left alone.
set -euo pipefail

[ $# -eq 1 ] || { echo "usage: $0 TARGET_FOLDER" >&2; exit 2; }
target=${1%/}
[ ! -e "$target" ] || exit 0

release=1.3.3
sha256=b2175e5ed1e1cca95ef8673432d1f089037f957cde4325a510738c9e7ad3b87d

mkdir -p "$(dirname "$target")"
scratch=$(mktemp -d "$target.XXXXXX")
trap 'rm -rf "$scratch"' EXIT

python3 -m venv "$scratch/venv"
# pip compares the sum before it opens the archive.
echo "imufusion==$release --hash=sha256:$sha256" >"$scratch/requirements.txt"
"$scratch/venv/bin/python" -m pip --quiet --no-cache-dir --disable-pip-version-check download --no-deps \
  --no-binary imufusion --require-hashes --dest "$scratch" --requirement "$scratch/requirements.txt"
tar -xzf "$scratch/imufusion-$release.tar.gz" -C "$scratch" "imufusion-$release/Fusion" "imufusion-$release/LICENSE.md"
mv "$scratch/imufusion-$release/LICENSE.md" "$scratch/imufusion-$release/Fusion/"
mv -T "$scratch/imufusion-$release/Fusion" "$target"
echo "x-io's Fusion $release: sources in $target"
