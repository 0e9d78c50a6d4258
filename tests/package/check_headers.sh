#!/bin/sh
# Every public header compiles alone: a caller may include any of them first. The build has shown that
# of each header that a source includes before all else; the others are compiled here.
#   check_headers.sh COMPILER
set -eu
cd "$(dirname "$0")/../.."
layers="common feature naivebayes modelfiles host backend operations"
# shellcheck disable=SC2086
shown=$(find $layers -name '*.cpp' -exec grep -hm1 '^ *#' {} + |
  sed -n 's/^#include "\(.*\)"$/\1/p')
# shellcheck disable=SC2086
find $layers -name '*.h' ! -path 'host/arrow/*' | grep -vxF -- "$shown" |
  xargs -P "$(nproc)" -n 8 sh -c '
    compiler=$0
    for header; do
      "$compiler" -std=c++20 -Wall -Wextra -I. -fsyntax-only -x c++ -include "$header" /dev/null ||
        { echo "$header does not compile alone"; exit 255; }
    done' "$1"
