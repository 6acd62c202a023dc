#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# consumer.sh cmake|pkg-config PREFIX WORK_FOLDER SOURCE COMPILER [ARGUMENTS...]
# Builds a client from nothing against an installation and runs it with the arguments. COMPILER is that of C for a .c
# source, else that of C++. Needs LIBDIR, the library folder below the prefix; with cmake also CMAKE and PROJECT.
set -eu

way=$1 prefix=$2 work=$3 source=$4 compiler=$5
shift 5

rm -rf "$work"
mkdir -p "$work"
case $way in
cmake)
    case $source in
    *.c) language=C variable=RUNTIME_CLIENT ;;
    *) language=CXX variable=FIRST_CLIENT ;;
    esac
    "$CMAKE" -S "$PROJECT" -B "$work" -G Ninja -DCMAKE_BUILD_TYPE=Release "-DCMAKE_${language}_COMPILER=$compiler" \
        "-DCMAKE_PREFIX_PATH=$prefix" "-D$variable=$source"
    "$CMAKE" --build "$work"
    ;;
pkg-config)
    case $source in
    *.c) standard="c99" ;;
    *) standard="c++17" ;;
    esac
    PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
    export PKG_CONFIG_PATH
    flags=$(pkg-config --cflags --libs nuxo)
    # The flags are several words.
    # shellcheck disable=SC2086
    "$compiler" -std=$standard -Wall -Wextra -Wpedantic -Werror -o "$work/consumer" "$source" $flags
    ;;
*)
    echo "$0: unknown way $way" >&2
    exit 2
    ;;
esac

LD_LIBRARY_PATH=$prefix/$LIBDIR "$work/consumer" "$@"
# What ran is the installed library, by its versioned name.
LD_LIBRARY_PATH=$prefix/$LIBDIR ldd "$work/consumer" | grep -F "libnuxo.so.0 => $prefix/$LIBDIR/libnuxo.so.0"
