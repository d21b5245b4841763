#!/usr/bin/env bash
# Fetches the sources of OpenCV's xfeatures2d module (LATCH, FREAK), which distribution packages of OpenCV leave out.
#
#     fetch-xfeatures2d.sh OPENCV_VERSION TARGET_FOLDER
#
# They are taken from OpenCV's own source distribution for Python, whose SHA-256 is pinned here. TARGET_FOLDER then holds
# include/, src/latch.cpp, src/freak.cpp and LICENSE, whole or not at all; a complete folder is left alone.
set -euo pipefail

if [ $# -ne 2 ]; then
  echo "usage: $0 OPENCV_VERSION TARGET_FOLDER" >&2
  exit 2
fi
version=$1
target=${2%/}

complete() {
  [ -f "$1/include/opencv2/xfeatures2d.hpp" ] && [ -f "$1/src/latch.cpp" ] && [ -f "$1/src/freak.cpp" ]
}

if complete "$target"; then
  echo "xfeatures2d $version: already in $target"
  exit 0
fi
if [ -n "$(ls -A "$target" 2>/dev/null)" ]; then
  echo "xfeatures2d $version: $target holds something else or a part only; remove it first" >&2
  exit 1
fi

case $version in
  4.6.0)
    release=4.6.0.66
    sha256=256efeb263999f3fb2427095392c1cb442d655508cd0a42864a383d55f3e6d43
    ;;
  *)
    cat >&2 <<END
xfeatures2d $version: no archive with a known check sum. LATCH and FREAK stay out unless the sources are given by hand:
take modules/xfeatures2d of opencv_contrib, tag $version, and put its include/, src/latch.cpp and src/freak.cpp
into $target, or configure with -DMIREL_XFEATURES2D_DIR=<folder of that module>.
END
    exit 1
    ;;
esac

mkdir -p "$(dirname "$target")"
scratch=$(mktemp -d "$target.XXXXXX")
trap 'rm -rf "$scratch"' EXIT

echo "xfeatures2d $version: fetching OpenCV's source distribution (150 MB, once)"
python3 -m venv "$scratch/venv"
pip=("$scratch/venv/bin/python" -m pip --quiet --no-cache-dir --disable-pip-version-check)
"${pip[@]}" install scikit-build setuptools wheel
# pip compares the sum before it opens the archive.
echo "opencv-contrib-python==$release --hash=sha256:$sha256" >"$scratch/requirements.txt"
"${pip[@]}" download --no-deps --no-binary opencv-contrib-python --no-build-isolation --require-hashes \
  --dest "$scratch" --requirement "$scratch/requirements.txt"

module=opencv-contrib-python-$release/opencv_contrib/modules/xfeatures2d
tar -xzf "$scratch/opencv-contrib-python-$release.tar.gz" -C "$scratch" \
  "$module/include" "$module/src/latch.cpp" "$module/src/freak.cpp" "${module%/modules/*}/LICENSE"
mkdir "$scratch/result" "$scratch/result/src"
mv "$scratch/$module/include" "$scratch/result/"
mv "$scratch/$module/src/latch.cpp" "$scratch/$module/src/freak.cpp" "$scratch/result/src/"
mv "$scratch/${module%/modules/*}/LICENSE" "$scratch/result/"

mv -T "$scratch/result" "$target"
echo "xfeatures2d $version: sources in $target"
