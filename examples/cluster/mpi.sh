#!/bin/sh
# A scan by the processes that an MPI launcher or srun starts, then the merge. Usage: mpi.sh N
# With Slurm: srun in place of mpirun, within an allocation.
set -e
export PHOTRAK_THREADS=1
mpirun -n "${1:-2}" photrak scan --no-commands --quiet --shard auto --resume --out scan-points ber-power-length.top
photrak scan --no-commands --quiet --merge scan-points ber-power-length.top
