# Sourced. Expects the working directory to be the root of the repository.

# cpp_sources: every C++ file of the repository, each ended by a zero byte.
cpp_sources() {
  find . \( -path ./build -o -path ./.git \) -prune -o -type f -name '*.[ch]pp' -print0
}
