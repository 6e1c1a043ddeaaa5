#!/bin/sh
# The pieces of a folder as an array of Slurm:      sbatch --array=1-1000 slurm_pieces.sh DIR [FIRST]
#
# Task I does piece FIRST + I - 1, so that an array may be shorter than the folder. A task that was stopped goes on from
# its checkpoint in the folder when it is queued again, and a piece that is done is no work.
#SBATCH --job-name=latbox
#SBATCH --ntasks=1
#SBATCH --cpus-per-task=1
#SBATCH --mem=1G
#SBATCH --time=04:00:00
#SBATCH --requeue
#SBATCH --output=latbox-%A_%a.log
set -eu
exec latbox-all --job=$((${2:-1} + SLURM_ARRAY_TASK_ID - 1)) --jobs="$1" --threads=1 --quiet=1
