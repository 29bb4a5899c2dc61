#!/usr/bin/env bash
# Installs the Debian packages that building, testing and the demo need, when
# they are missing. Safe to run again: it installs nothing that is present.
set -euo pipefail

packages=(
  build-essential cmake pkg-config git ca-certificates
  libcurl4-openssl-dev zlib1g-dev nlohmann-json3-dev libsqlite3-dev libcpp-httplib-dev libssl-dev
  libicu-dev libcli11-dev libjwt-dev
  libpng-dev libjpeg62-turbo-dev libwebp-dev libgif-dev
  libgtest-dev libgmock-dev libbenchmark-dev libsimdjson-dev
  libcairo2-dev libpango1.0-dev fonts-dejavu-core fontconfig libfontconfig-dev
)
if [[ "${OBOLO_SETUP_EXTRA:-}" != "" ]]; then
  read -r -a extra <<<"${OBOLO_SETUP_EXTRA}"
  packages+=("${extra[@]}")
fi

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if ((${#missing[@]})); then
  echo "Installing: ${missing[*]}"
  sudo_cmd=()
  if [[ $(id -u) -ne 0 ]]; then sudo_cmd=(sudo); fi
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
