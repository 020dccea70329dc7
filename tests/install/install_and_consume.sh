#!/usr/bin/env bash
# Installs the build into a temporary prefix, as a packager would, then builds the consumer in
# examples/consumer against it twice (CMake package, pkg-config) and runs both; the installed
# program must report the project's version and read the installed resources.
# Usage: install_and_consume.sh BUILD_DIR SOURCE_DIR VERSION CXX_COMPILER "CXX_FLAGS"
set -euo pipefail
build=$1 source=$2 version=$3 cxx=$4 cxxflags=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "install test: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null
# Install from one place, use from another: nothing may point back at the first prefix.
mv "$prefix" "$work/moved" && prefix=$work/moved

[[ -f $prefix/include/velmorant/platform/services/Platform.h ]] || fail "public headers missing"
[[ -f $prefix/include/velmorant/snippet_ui/SleepMetricsUI.h ]] || fail "upper-layer headers missing"
# Of the headers used only inside the platform, just the C handles that Image.h still needs.
installed_detail=$(cd "$prefix/include/velmorant" && find . -path '*/detail/*' -type f | sort | tr '\n' ' ')
[[ -z "$installed_detail" ]] || fail "detail headers installed: $installed_detail"
[[ -f $prefix/share/velmorant/resources/fonts/fonts.conf ]] || fail "resources missing"

program=$prefix/bin/velmorant-snippet
[[ "$("$program" --version)" == "velmorant-snippet $version" ]] || fail "--version is not $version"
# The installed program reads the installed resources: a text changed there shows on the card.
strings=$prefix/share/velmorant/resources/strings/de.lproj/Localizable.strings
sed -i 's|"Schlafenszeit"|"Installiert"|' "$strings"
env -u VELMORANT_RESOURCES "$program" show LatestBedtimeIntent --locale de_DE --tz Europe/London \
    --now 2024-03-05T21:30:00 > "$work/card.json"
grep -q Installiert "$work/card.json" || fail "the installed program does not read its installed resources"

# With the CMake package.
cmake -S "$source/examples/consumer" -B "$work/cmake-build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$cxxflags" -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build "$work/cmake-build" >/dev/null
"$work/cmake-build/velmorant-consumer" "$work/cmake.png" | tee "$work/cmake.txt"
grep -q '^7.5 hours: ' "$work/cmake.txt" || fail "consumer (CMake) printed no duration"
[[ -s $work/cmake.png ]] || fail "consumer (CMake) wrote no picture"

# With pkg-config.
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig${PKG_CONFIG_PATH:+:$PKG_CONFIG_PATH}
[[ "$(pkg-config --modversion velmorant)" == "$version" ]] || fail "velmorant.pc has the wrong version"
# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++20 $cxxflags "$source/examples/consumer/main.cpp" -o "$work/pc-consumer" \
    -DCONSUMER_RESOURCES="\"$(pkg-config --variable=resourcedir velmorant)\"" $(pkg-config --cflags --libs velmorant)
"$work/pc-consumer" "$work/pc.png" > "$work/pc.txt"
cmp -s "$work/cmake.txt" "$work/pc.txt" || fail "the two consumers disagree"
cmp -s "$work/cmake.png" "$work/pc.png" || fail "the two consumers drew different pictures"
echo "install test: installed, built against twice and ran"
