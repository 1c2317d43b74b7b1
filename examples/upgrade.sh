#!/usr/bin/env bash
# Usage: upgrade.sh TARN FOLDER
# The usual work: validates a network, merges an upgrade into it, validates the result, and shows that
# a delta with a conflict changes nothing. TARN is the command; results go into FOLDER. Runs in the
# root of the repository.
set -euo pipefail
tarn=$1 results=$2
network=examples/network.xml
mkdir -p "$results"

show() {
  echo
  echo "\$ tarn $*"
  "$tarn" --log-level info "$@"
}

echo "Load with validation:"
show check "$network"

echo
echo "Merge the upgrade and validate source, delta and result; then validate what was written:"
show merge "$network" examples/upgrade.xml --validate -o "$results/network-upgraded.xml"
show check "$results/network-upgraded.xml"

echo
echo "A delta that conflicts with the network is refused as a whole:"
cp "$network" "$results/network-copy.xml"
status=0
show merge --in-place "$results/network-copy.xml" examples/conflict.xml || status=$?
echo "Exit status $status"
cmp "$network" "$results/network-copy.xml"
echo "$results/network-copy.xml is unchanged"
test "$status" -eq 3
