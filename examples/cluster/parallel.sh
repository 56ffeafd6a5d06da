#!/bin/sh
# A scan by GNU parallel on the hosts of the file nodes, which share this folder. Usage: parallel.sh N
set -e
parallel --sshloginfile nodes --workdir "$PWD" \
    photrak scan --no-commands --quiet --shard "{}/$1" --resume --out scan-points ber-power-length.top \
    ::: $(seq "$1")
photrak scan --no-commands --quiet --merge scan-points ber-power-length.top
