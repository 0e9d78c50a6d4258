#!/bin/sh
# A library shows the symbols that callers rely on, and nothing else; names of PredSelect:: and PredSelectC:: that are
# bound to its version (PREDSELECT_CXX) may come and go. A list only grows, unless the ABI version does.
#   check_exports.sh LIBRARY LIST
set -eu
nm -D --defined-only "$1" | awk '$2 != "A" && $3 !~ /@@PREDSELECT_CXX$/ {print $3}' | LC_ALL=C sort |
  diff "$2" -
! nm -D --defined-only -C "$1" | grep 'PREDSELECT_CXX$' |
  grep -v -E ' (A PREDSELECT_CXX|([TVWBDRu] ((typeinfo|typeinfo name|vtable) for )?PredSelectC?::.*))$'
