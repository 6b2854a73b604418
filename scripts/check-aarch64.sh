#!/usr/bin/env bash
# Cross-builds every library, the example, the registry and the whole test suite for AArch64 Linux
# and runs the suite under qemu. The cross compiler and qemu come from Debian's packages; POCO,
# GoogleTest and what they need come from Debian's arm64 packages, unpacked into build/aarch64-root
# (nothing is installed for arm64, so the machine's own development packages stay as they are).
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

root="build/aarch64-root"
debs="build/aarch64-debs"
# What the build links against and the tests load; the C and C++ runtime come with the compiler.
arm64_packages=(libpoco-dev libpocofoundation80 libpoconet80 libpocojson80 libpcre3 libpcre3-dev
                zlib1g zlib1g-dev libgtest-dev libgmock-dev)

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
fi

unpack_arm64_packages() {
    local stamp="${root}/.packages"
    if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "${arm64_packages[*]}" ]; then
        return
    fi
    if ! dpkg --print-foreign-architectures | grep -qx arm64; then
        "${sudo_cmd[@]}" dpkg --add-architecture arm64
        "${sudo_cmd[@]}" apt-get update -qq
    elif ! apt-cache show libpoco-dev:arm64 >/dev/null 2>&1; then
        "${sudo_cmd[@]}" apt-get update -qq
    fi
    rm -rf "$root" "$debs"
    mkdir -p "$root" "$debs"
    local download=(apt-get download -qq)
    if [ "$(id -u)" -eq 0 ]; then
        download+=(-o APT::Sandbox::User=root)
    fi
    (cd "$debs" && "${download[@]}" "${arm64_packages[@]/%/:arm64}")
    for deb in "$debs"/*.deb; do
        dpkg-deb --extract "$deb" "$root"
    done
    # Links such as libz.so point at /lib/...; inside the folder they must point at the folder's copy.
    find "$root" -type l -lname '/*' | while read -r link; do
        ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "${root}$(readlink "$link")")" "$link"
    done
    echo "${arm64_packages[*]}" > "$stamp"
}

bash scripts/install-deps.sh g++-aarch64-linux-gnu qemu-user-static
unpack_arm64_packages

jobs="$(nproc)"
cmake --preset aarch64
cmake --build --preset aarch64 --parallel "${jobs}"
ctest --preset aarch64 --parallel "${jobs}"
echo "=== packages for arm64 ==="
bash scripts/check-packages.sh aarch64
