# Sourced. Expects the working directory to be the root of the repository.

# cpp_sources: prints every C++ file of the repository, each followed by a NUL.
cpp_sources() {
  find . \( -path ./build -o -path ./.git \) -prune -o -type f -name '*.[ch]pp' -print0
}
