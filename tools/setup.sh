#!/usr/bin/env bash
# Installs what the build and the tests need and this machine lacks. Sourced by ./run and ./test; Debian 12.
#   tools/setup.sh [--checks|--package|--accessibility]     --checks: the clang-19 tools of ./.ci/run, too; --package:
#                       those that make Debian packages; --accessibility: a desktop and a screen reader's ears, for
#                       tools/accessibility/run
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config libsqlite3-dev libicu-dev libfmt-dev libcli11-dev nlohmann-json3-dev
  libkainjow-mustache-dev libxlsxwriter-dev libgtest-dev libgmock-dev mdbtools mdbtools-dev qt6-base-dev libgl-dev
  fonts-dejavu-core procps python3)
[ "${1:-}" = "--package" ] && packages+=(debhelper lintian dpkg-dev fakeroot)
[ "${1:-}" = "--accessibility" ] && packages+=(at-spi2-core python3-pyatspi dbus libglib2.0-bin xvfb xauth openbox xdotool)
if [ "${1:-}" = "--checks" ]; then
  packages+=(clang-19 clang-tidy-19 clang-format-19 libclang-rt-19-dev ccache chromium)
  # These two often come from elsewhere than Debian, whose packages then conflict with what is there.
  command -v java >/dev/null || packages+=(default-jre-headless)
  { command -v node && command -v npm; } >/dev/null || packages+=(nodejs npm)
fi

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if ! command -v apt-get >/dev/null; then
  echo "setup: this script installs Debian packages, and apt-get is not here. Needed: ${missing[*]}" >&2
  exit 1
fi
as_root=()
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    echo "setup: these packages are missing and neither root nor sudo is at hand: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
log=$(mktemp)
if ! { "${as_root[@]}" apt-get update && "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  tail -20 "$log" >&2
  echo "setup: the packages could not be installed (the log ends above)." >&2
  exit 1
fi
rm -f "$log"
