# Sourced. The Debian packages that the scripts need.

BUILD_PACKAGES=(g++ cmake ninja-build python3 libboost-dev libgtest-dev googletest
  libcli11-dev libfmt-dev nlohmann-json3-dev zlib1g-dev scdoc)
TEST_PACKAGES=(clang clang-format clang-tidy libclang-rt-dev g++-i686-linux-gnu
  chromium chromium-driver python3-selenium valgrind patch libxml2-dev libxml2-utils libexpat1-dev
  python3-jsonschema python3-junitparser pkgconf make abigail-tools xz-utils doxygen)
ALL_PACKAGES=(g++-arm-linux-gnueabihf g++-powerpc-linux-gnu qemu-user locales gcovr
  dpkg-dev file lintian debootstrap
  python3-clang)
BENCH_PACKAGES=(libbenchmark-dev libpugixml-dev libtinyxml2-dev libxml2-dev libxml2-utils
  libexpat1-dev libyang2-dev pkgconf gnuplot-nox valgrind)

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# install_missing PACKAGE...: installs the packages that are missing.
install_missing() {
  if ! command -v dpkg-query >/dev/null; then
    echo "Not a Debian system; needed are what Debian calls: $*" >&2
    return
  fi
  local package missing=()
  for package in "$@"; do
    case "$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null)" in
      installed) ;;
      *) missing+=("$package") ;;
    esac
  done
  if [ ${#missing[@]} -eq 0 ]; then return; fi
  echo "Installing ${missing[*]}" >&2
  as_root apt-get -q update >&2
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get -q install -y --no-install-recommends "${missing[@]}" >&2
}
