#!/bin/sh
# The procedure library shows its entry and the three debug flags, and nothing else.
#   check_exports.sh LIBRARY
set -eu
exported=$(nm -D --defined-only "$1" | awk '{print $3}' | sort | tr '\n' ' ')
expected="display_feature_select display_naive_bayes display_settings predsele_ "
echo "exported: $exported"
[ "$exported" = "$expected" ]
