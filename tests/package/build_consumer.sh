#!/bin/sh
# Installs the build into a folder of its own, builds a project against the installed package, runs
# its program and compares what it prints.
#   build_consumer.sh BUILD_DIR PROJECT_DIR PROGRAM EXPECTED [FLAGS]
set -eu
build=$1 project=$2 program=$3 expected=$4 flags=${5:-}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cmake --install "$build" --prefix "$folder/installed" >/dev/null
cmake --no-warn-unused-cli -S "$project" -B "$folder/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_PREFIX_PATH="$folder/installed" -DCMAKE_C_FLAGS="-Wall -Wextra $flags" \
  -DCMAKE_CXX_FLAGS="-Wall -Wextra $flags" >/dev/null
cmake --build "$folder/build"
"$folder/installed/bin/predselect" --version >/dev/null
(cd "$folder" && "build/$program" >printed)
diff -u "$expected" "$folder/printed"
