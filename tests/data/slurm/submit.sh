#!/bin/sh
# Submits the tiles of this run as one job array, and the merge as a job that starts when every
# tile has ended well.
set -e
cd "$(dirname "$0")"
tiles=$(sbatch --parsable --chdir="$(pwd)" tiles.slurm)
tiles=${tiles%%;*}
merge=$(sbatch --parsable --chdir="$(pwd)" --dependency=afterok:$tiles merge.slurm)
merge=${merge%%;*}
echo "Submitted job array $tiles (3 tiles) and the merge, job $merge, after it"
