#!/usr/bin/env bash
# Formats every C++ source of the repository; with --check, only reports files that need it.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

clang_format="$(command -v clang-format-14 || command -v clang-format)"
mapfile -t files < <(git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp')

if [ "${#files[@]}" -eq 0 ]; then
    exit 0
fi

if [ "${1:-}" = "--check" ]; then
    "${clang_format}" --dry-run -Werror "${files[@]}"
    echo "formatting ok (${#files[@]} files)"
else
    "${clang_format}" -i "${files[@]}"
fi
