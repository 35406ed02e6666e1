#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need.
set -euo pipefail
pkgs=(build-essential cmake ninja-build pkg-config
      qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libgl-dev
      qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-translations-l10n python3
      libsqlite3-dev sqlite3 libgtest-dev libgmock-dev googletest libbenchmark-dev
      clang lld xvfb xauth
      qt6-image-formats-plugins fonts-dejavu-core poppler-utils file
      cups-daemon cups-client systemd
      postgresql libpq-dev
      libocct-foundation-dev libocct-modeling-data-dev libocct-modeling-algorithms-dev
      libocct-data-exchange-dev libocct-visualization-dev libtbb-dev admesh libtiff-dev
      libqt6help6)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update -q
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -q "${missing[@]}"
fi
