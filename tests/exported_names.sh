#!/usr/bin/env bash
# exported_names.sh LIBRARY LIST: the library exports the names of the reviewed list, and only them.
set -euo pipefail
export LC_ALL=C

library=$1
reviewed=$2
expected_soname=libvelmoext1.so.1.4.8

soname=$(readelf --dynamic "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\].*/\1/p')
if [[ $soname != "$expected_soname" ]]; then
    echo "soname is '$soname', not '$expected_soname'" >&2
    exit 1
fi

if ! nm --dynamic --demangle --defined-only "$library" | cut -d ' ' -f 3- | sort -u |
    diff --unified --label reviewed --label exported "$reviewed" -; then
    echo "the exported names differ; where that is wanted, change $reviewed with it" >&2
    exit 1
fi
