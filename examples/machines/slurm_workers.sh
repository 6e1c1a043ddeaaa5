#!/bin/sh
# Workers for a farm, as an array of Slurm:      sbatch --array=1-50 slurm_workers.sh PASSWORD HOST PORT
#
# Each takes all cores of its allocation, waits an hour for a farm that is not there, and leaves after ten idle minutes.
#SBATCH --job-name=latbox-worker
#SBATCH --ntasks=1
#SBATCH --cpus-per-task=8
#SBATCH --mem=8G
#SBATCH --time=24:00:00
#SBATCH --output=latbox-worker-%A_%a.log
set -eu
exec work_queue_worker --password="$1" --cores="${SLURM_CPUS_PER_TASK:-1}" --connect-timeout=3600 --idle-timeout=600 \
  --workdir="${TMPDIR:-/tmp}" "$2" "$3"
