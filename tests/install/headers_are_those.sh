#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# headers_are_those.sh INCLUDE_DIR HEADER...: the installed headers are those listed and what the umbrella leads to.
set -eu

include_dir=$1
shift
listed=$(printf '%s\n' "$@" | LC_ALL=C sort)
installed=$(cd "$include_dir" && find . -name '*.h' | sed 's|^\./||' | LC_ALL=C sort)
if [ "$listed" != "$installed" ]; then
    printf 'listed:\n%s\ninstalled:\n%s\n' "$listed" "$installed"
    exit 1
fi
for header in nuxo/nuxo.h qv_cipr/qv_log_common.h qv_tools/qv_list.h; do
    test -f "$include_dir/$header"
done
for internal in nuxo/Log.h qv_cipr/qv_cipr_internal.h; do
    test ! -e "$include_dir/$internal"
done
