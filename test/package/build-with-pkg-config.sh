#!/bin/sh
# Builds the outside program with nothing but the compiler and pkg-config, as a plain Makefile would.
# usage: build-with-pkg-config.sh <folder holding servicedb.pc> <program to write>
set -eu
PKG_CONFIG_PATH="$1"
export PKG_CONFIG_PATH
flags="$(pkg-config --cflags --libs servicedb)"
# shellcheck disable=SC2086 # the flags are words
exec "${CXX:-c++}" -std=c++17 "$(dirname "$0")/consumer/main.cpp" -o "$2" $flags
