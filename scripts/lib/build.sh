# Sourced. Expects the working directory to be the root of the repository.

# build PRESET [TARGET...]: configures if necessary and builds. Prints nothing on success.
build() {
  local preset=$1 log=build/$1.log
  shift
  mkdir -p build
  if ! build_steps "$preset" "$@" >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
}

build_steps() {
  local preset=$1 ninja_file=build/$1/build.ninja
  shift
  # Ninja configures again when a build file has changed, but does not read presets.
  if [ ! -f "$ninja_file" ] || [ CMakePresets.json -nt "$ninja_file" ]; then
    cmake --preset "$preset" || return 1
  fi
  cmake --build --preset "$preset" ${1:+--target "$@"} -- --quiet
}
