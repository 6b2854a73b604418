#!/usr/bin/env bash
# Builds the Debian packages of a built preset and checks them with lintian. Packages for this
# machine's own architecture are then unpacked into a scratch root, their dependencies are compared
# with the libraries their programs load, an outside program is built against them with CMake and
# with pkg-config, and the example is started from them and asked for its services.
# usage: check-packages.sh [preset]   (default: default)
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

preset="${1:-default}"
build="build/${preset}"
packages="${build}/packages"

rm -rf "$packages"
cpack --config "${build}/CPackConfig.cmake" -G DEB
debs=("$packages"/*.deb)
echo "built: ${debs[*]}"

lintian_options=(--fail-on error,warning --display-level ">=info" --no-tag-display-limit)
if [ "$(id -u)" -eq 0 ]; then
    lintian_options+=(--allow-root)
fi
lintian "${lintian_options[@]}" "${debs[@]}"

architecture="$(dpkg-deb --field "${debs[0]}" Architecture)"
if [ "$architecture" != "$(dpkg --print-architecture)" ]; then
    echo "packages for ${architecture} built and checked"
    exit 0
fi

root="$(realpath "$packages")/root"
for deb in "${debs[@]}"; do
    dpkg-deb --extract "$deb" "$root"
done
multiarch="$(c++ -print-multiarch)"
libdir="${root}/usr/lib/${multiarch}"

# Every library a packaged program loads comes from the package itself or from one it depends on.
for deb in "${debs[@]}"; do
    name="$(dpkg-deb --field "$deb" Package)"
    depends="$(dpkg-deb --field "$deb" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//')"
    for file in $(dpkg-deb --fsys-tarfile "$deb" | tar -t | grep -E '(/bin/[^/]+|\.so\.[0-9.]+)$'); do
        for soname in $(objdump -p "${root}/${file#./}" | awk '$1 == "NEEDED" { print $2 }'); do
            if [ -e "${libdir}/${soname}" ]; then
                provider="libservicedb0"
            else
                provider="$(dpkg -S "*/${multiarch}/${soname}" | head -n 1 | cut -d: -f1)"
            fi
            if [ "$provider" != "$name" ] && ! grep -qxF "$provider" <<<"$depends"; then
                echo "${name}: ${file} loads ${soname} of ${provider}, which it does not depend on" >&2
                exit 1
            fi
        done
    done
done
echo "dependencies cover every library loaded"

consumer="${packages}/consumer"
cmake -S test/package/consumer -B "${consumer}" -DCMAKE_PREFIX_PATH="${root}/usr" -DCMAKE_BUILD_TYPE=Release
cmake --build "${consumer}"
LD_LIBRARY_PATH="$libdir" "${consumer}/servicedb-consumer" | grep "^consumer ok"

bash test/package/build-with-pkg-config.sh "${libdir}/pkgconfig" "${packages}/consumer-pkg-config"
LD_LIBRARY_PATH="$libdir" "${packages}/consumer-pkg-config" | grep "^consumer ok"

# The installed example finds its bundled definitions and libraries by itself.
log="${packages}/example.log"
"${root}/usr/bin/servicedb-example" --port 0 --tracks 10 --vehicle-rate 0 > "$log" 2>&1 &
example=$!
trap 'kill "$example" 2>/dev/null || true' EXIT
address=""
for _ in $(seq 1 100); do
    address="$(sed -n 's|.*Listening on \(http://[0-9.:]*/\).*|\1|p' "$log")"
    if [ -n "$address" ]; then
        break
    fi
    sleep 0.1
done
services="$(curl -sf "$address")"
grep -q '"audio"' <<<"$services" && grep -q '"cabin"' <<<"$services"
echo "installed example serves: ${services}"
