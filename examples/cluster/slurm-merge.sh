#!/bin/sh
# Writes the results of all points of slurm-array.sh into scan-points.
#SBATCH --job-name=photrak-merge
exec photrak scan --no-commands --quiet --merge scan-points ber-power-length.top
