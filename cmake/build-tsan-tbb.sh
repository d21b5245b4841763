#!/usr/bin/env bash
# Builds oneTBB for the thread sanitizer, which sees races that there are not where it has not compiled the scheduler.
#
#     build-tsan-tbb.sh FOLDER
#
# The source is that of the installed package. apt fetches and checks it by a list of its own, made from the address
# that the package comes from: the system's lists stay as they are.
set -euo pipefail

folder=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/lists/partial"

# shellcheck source=/dev/null
. /etc/os-release
uri=$(apt-get download --print-uris libtbb-dev | grep -o "[a-z]*://[^']*")
components=main
[ "$ID" = ubuntu ] && components="main universe"
suites="$VERSION_CODENAME $VERSION_CODENAME-updates"
[[ $uri = *security* ]] && suites=$VERSION_CODENAME-security
for suite in $suites; do echo "deb-src ${uri%%/pool/*} $suite $components"; done > "$scratch/sources.list"
apt=(apt-get -qq -o "Dir::Etc::SourceList=$scratch/sources.list" -o Dir::Etc::SourceParts=-
  -o "Dir::State::Lists=$scratch/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= -o APT::Sandbox::User=)
"${apt[@]}" update
cd "$scratch"
"${apt[@]}" source "$(dpkg-query -W -f '${source:Package}=${source:Version}' libtbb-dev)"
cd ./*tbb-*/

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
  -DCMAKE_CXX_FLAGS=-Wno-tsan -DTBB_SANITIZE=thread -DTBB_TEST=OFF -DTBB_STRICT=OFF -DTBBMALLOC_BUILD=OFF \
  -DTBB_DISABLE_HWLOC_AUTOMATIC_SEARCH=ON -DCMAKE_INSTALL_PREFIX="$folder.new" -DCMAKE_INSTALL_LIBDIR=lib
cmake --build build
rm -rf "$folder.new"
cmake --install build
mv "$folder.new" "$folder"
