#!/bin/sh
# A scan as a Slurm array of 16 tasks: sbatch slurm-array.sh, and slurm-merge.sh after it:
#   id=$(sbatch --parsable slurm-array.sh) && sbatch --dependency=afterok:$id slurm-merge.sh
#SBATCH --job-name=photrak-scan
#SBATCH --array=1-16
#SBATCH --cpus-per-task=1
export PHOTRAK_THREADS=1
exec photrak scan --no-commands --quiet --shard auto --resume --out scan-points ber-power-length.top
