# What the scripts share. Sourced with the repository as working folder.
set -euo pipefail

# install PACKAGE...: installs the Debian packages that are missing.
install() {
  local missing=()
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "installing ${missing[*]}" >&2
  local root=()
  [ "$(id -u)" -eq 0 ] || root=(sudo)
  "${root[@]}" apt-get update -qq >&2
  DEBIAN_FRONTEND=noninteractive "${root[@]}" apt-get install -y -qq --no-install-recommends \
    "${missing[@]}" >/dev/null
}

build_packages=(g++ cmake ninja-build libboost-dev libcli11-dev)
