#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Compiles a program with the flags that pkg-config names and runs it: COMPILER PREFIX SOURCE FOLDER
set -euo pipefail
compiler=$1 prefix=$2 source=$3 folder=$4

package=$(find "$prefix" -name fileimporter.pc)
PKG_CONFIG_PATH=$(dirname "$package")
export PKG_CONFIG_PATH
# pkg-config writes its answer for a shell: a space in a path has a backslash before it.
flags=()
eval "flags+=($(pkg-config --cflags --libs fileimporter))"

mkdir -p "$folder"
"$compiler" -std=c++20 -Wall -Wextra -Werror "$source" -o "$folder/consumer" "${flags[@]}"
LD_LIBRARY_PATH=$(dirname "$PKG_CONFIG_PATH") "$folder/consumer" "$folder"
