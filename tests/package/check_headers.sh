#!/bin/sh
# Compiles every public header alone: a caller may include any of them first.
#   check_headers.sh COMPILER
set -eu
cd "$(dirname "$0")/../.."
find common feature naivebayes modelfiles host backend operations -name '*.h' ! -path 'host/arrow/*' |
  xargs -P "$(nproc)" -n 8 sh -c '
    compiler=$0
    for header; do
      "$compiler" -std=c++20 -Wall -Wextra -I. -fsyntax-only -x c++ -include "$header" /dev/null ||
        { echo "$header does not compile alone"; exit 255; }
    done' "$1"
