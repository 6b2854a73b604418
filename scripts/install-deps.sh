#!/usr/bin/env bash
# Installs the Debian packages the build needs, or the packages named as arguments; does nothing when
# all are present.
set -euo pipefail

packages=(cmake g++ make libpoco-dev libgtest-dev libgmock-dev libbenchmark-dev clang-format pkgconf lintian curl
    clang-14 libclang-rt-14-dev)
if [ "$#" -gt 0 ]; then
    packages=("$@")
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ "${#missing[@]}" -eq 0 ]; then
    exit 0
fi

echo "Installing: ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
fi
"${sudo_cmd[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
