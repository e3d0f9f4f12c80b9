#!/bin/sh
# Installs the Debian packages that are missing: packages.sh build | test. Does nothing when all are there.
set -eu

build="g++ cmake ninja-build ccache pkg-config libsqlite3-dev libpq-dev libpugixml-dev libssl-dev libzip-dev libfmt-dev
       libcli11-dev nlohmann-json3-dev qt6-base-dev qt6-svg-dev qt6-pdf-dev qt6-translations-l10n libgl-dev fonts-dejavu-core"
test="libgtest-dev libgmock-dev postgresql libxml2-utils python3 poppler-utils desktop-file-utils"

case "${1:-build}" in
    build) wanted=$build ;;
    test) wanted="$build $test" ;;
    *) echo "packages.sh build | test" >&2; exit 2 ;;
esac

missing=
for package in $wanted; do
    if ! dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed'; then missing="$missing $package"; fi
done
[ -z "$missing" ] && exit 0

as_root=
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null 2>&1 || { echo "Missing packages:$missing. Install them as root." >&2; exit 1; }
    as_root=sudo
fi
echo "Installing:$missing" >&2
$as_root env DEBIAN_FRONTEND=noninteractive sh -c "apt-get update -qq && apt-get install -y -qq --no-install-recommends $missing" >&2
