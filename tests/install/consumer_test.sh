#!/usr/bin/env bash
# Installs into a scratch prefix, moves that prefix elsewhere, and builds and runs a C program against it: by
# pkg-config, by find_package, and by pkg-config once more from the library directory of a Debian package.
set -euo pipefail
cmake=$1 compiler=$2 source_dir=$3 build_dir=$4 version=$5

consumer=$source_dir/tests/install/consumer
scratch=$build_dir/install-test
rm -rf "$scratch"
mkdir -p "$scratch"

"$cmake" --install "$build_dir" --prefix "$scratch/first" >"$scratch/install.log"
mv "$scratch/first" "$scratch/moved prefix"
prefix="$scratch/moved prefix"

fail() {
    echo "$*" >&2
    exit 1
}

# A variable of dlxcomn.pc. pkg-config quotes what holds a blank, for the shell to read.
variable() {
    eval "printf %s $(pkg-config --variable="$1" dlxcomn)"
}

# Builds the program with the .pc file of a directory and runs it without any help in finding the libraries.
build_with_pkg_config() {
    local program=$1
    export PKG_CONFIG_PATH=$2
    export PKG_CONFIG_LIBDIR=
    [ "$(pkg-config --modversion dlxcomn)" = "$version" ] || fail "dlxcomn.pc has another version"
    local libdir flags
    libdir=$(variable libdir)
    [ -e "$libdir/libdlxcomn_r64.so" ] || fail "libdir of dlxcomn.pc, $libdir, holds no library"
    eval "flags=($(pkg-config --cflags --libs dlxcomn))"
    "$compiler" -Wall -Wextra -Werror "$consumer/consumer.c" -o "$program" "${flags[@]}" "-Wl,-rpath,$libdir"
    "$program"
}

pc_file=$(find "$prefix" -name dlxcomn.pc)
[ -n "$pc_file" ] || fail "no dlxcomn.pc was installed"
build_with_pkg_config "$scratch/by-pkg-config" "$(dirname "$pc_file")"

"$cmake" -S "$consumer" -B "$scratch/by-cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$compiler" \
    -DCMAKE_C_FLAGS="-Wall -Wextra -Werror" >"$scratch/configure.log"
"$cmake" --build "$scratch/by-cmake" >"$scratch/build.log" || { cat "$scratch/build.log" >&2; exit 1; }
"$scratch/by-cmake/consumer"

# The command finds the libraries of its own tree, and each header was installed.
"$prefix/bin/dlxcomn" --help >/dev/null || fail "the installed command does not run"
for header in "$source_dir"/include/dlxcomn/*.h; do
    cmp "$header" "$prefix/include/dlxcomn/$(basename "$header")"
done

# The data home is there as it is kept, with the tables that the build has made.
for directory in config locales charsets; do
    diff -r "$build_dir/home/$directory" "$prefix/share/dlxcomn/home/$directory" || fail "the data home is another one"
done

# The installed command takes the home that lies beside it, with a table for every set.
for subcommand in check charsets; do
    env -u DALVEX -u LC_ALL -u LANG "$prefix/bin/dlxcomn" "$subcommand" >"$scratch/$subcommand.log" ||
        fail "the installed home is not whole: $(cat "$scratch/$subcommand.log")"
done
grep -q "^home $(realpath "$prefix")/share/dlxcomn/home$" "$scratch/check.log" ||
    fail "the home beside the command is not taken"

# The same tree as a Debian package lays it out: one directory deeper.
"$cmake" -S "$source_dir" -B "$scratch/debian" -DCMAKE_INSTALL_PREFIX=/usr -DDLXCOMN_TESTS=OFF \
    -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu -DCMAKE_C_COMPILER="$compiler" >"$scratch/debian.log"
libraries=$(dirname "$(dirname "$pc_file")")
deeper="$prefix/deb/lib/x86_64-linux-gnu"
mkdir -p "$deeper/pkgconfig"
cp -a "$libraries"/libdlx* "$deeper"
cp -a "$prefix/include" "$prefix/deb"
cp "$scratch/debian/dlxcomn.pc" "$deeper/pkgconfig"
build_with_pkg_config "$scratch/by-debian-layout" "$deeper/pkgconfig"
[ "$(realpath "$(variable prefix)")" = "$(realpath "$prefix/deb")" ] ||
    fail "the prefix of the deeper dlxcomn.pc is $(variable prefix)"
