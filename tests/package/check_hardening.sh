#!/bin/sh
# check_hardening.sh PROGRAM LIBRARY...: what the headers of these binaries say of how they were built. The
# program can be loaded anywhere, tables of functions are read-only once it runs, no stack is
# executable, and arrays are guarded: on the stack, and in the calls of the C library.
set -u
failed=0
fail() {
  echo "$1: $2" >&2
  failed=1
}
guarded=0
checked=0
for file; do
  headers=$(readelf --wide --file-header --program-headers --dynamic "$file") || exit 1
  symbols=$(readelf --wide --dyn-syms "$file")
  has() { echo "$headers" | grep -q "$1"; }
  has 'Type: *DYN' || fail "$file" "is not position independent"
  [ "$file" != "$1" ] || has 'FLAGS_1.*PIE' || fail "$file" "is no position independent program"
  has 'GNU_RELRO' || fail "$file" "has no part that becomes read-only"
  has 'FLAGS.*NOW' || fail "$file" "binds functions late"
  has 'GNU_STACK.* RW ' || fail "$file" "may have an executable stack"
  ! has 'TEXTREL' || fail "$file" "has code that is written to when it is loaded"
  ! echo "$symbols" | grep -q '__stack_chk_fail' || guarded=$((guarded + 1))
  ! echo "$symbols" | grep -q '__[a-z]*_chk@' || checked=$((checked + 1))
done
# A library of thin layers may have nothing to guard.
[ "$guarded" -ge 5 ] || fail "stack protector" "in $guarded of $# binaries alone"
[ "$checked" -ge 2 ] || fail "_FORTIFY_SOURCE" "in $checked of $# binaries alone"
exit $failed
