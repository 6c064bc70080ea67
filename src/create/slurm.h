// src/create/slurm.h - Slurm job scripts for a run package: one job running the run's sh script, or
// for a tiled run a job array with one task per tile that takes part and the merge as a job that
// waits for the whole array.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace invsetup {
struct SizeEstimate;

/// What each job asks for. memory and time are in Slurm's own forms ("2048M", "12:00:00" or
/// "2-00:00:00"); partition empty: the cluster's default.
struct SlurmResources {
    int cpus = 1;
    std::string memory = "1024M";
    std::string time = "01:00:00";
    std::string partition;
};

/// Defaults from the size estimate for the job that runs the whole run or its largest tile: memory
/// the estimate's with a quarter more for the programs themselves, at least 1 GiB; CPUs the
/// definition's thread count, else one per 4 GiB of matrix (1 to 16); time from the matrix work at
/// about one Gflop/s per CPU (a hundred operations per matrix entry for the sensitivity, two thousand
/// for the inversion's products with the matrix), doubled, whole hours, at least one.
SlurmResources slurm_resources_for(const SizeEstimate& estimate, int thread_count);

/// Slurm's memory form of a size in bytes: whole MiB rounded up, "2048M".
std::string slurm_memory_text(double bytes);
/// Whether `text` is a time limit of the form HH:MM:SS (minutes and seconds below 60).
bool is_slurm_time(const std::string& text);

/// The tiles that take part in a tiled run, in the order its merge script runs them: the folders of
/// the "call tileIIJJ.bat" lines of iter_all.bat that are not commented out.
std::vector<std::string> kept_tiles(const std::filesystem::path& iter_all_batch);

/// A plain run: "submit.slurm", one job that runs `script` (the run's sh script, in the run folder).
/// Returns the path written.
std::filesystem::path write_slurm_job(const std::filesystem::path& run_directory, const std::string& script,
                                      const std::string& job_name, const SlurmResources& resources);

/// A tiled run: "tiles.slurm" (a job array, task n runs the script of tile_folders[n - 1] in that
/// folder), "merge.slurm" (insert_all.sh once every task has ended well) and "submit.sh", which
/// submits both with the dependency. The tiles insert their models into the run's one model at the
/// end of their scripts; "slurm_bin" holds stand-ins for the insert programs that take a lock first,
/// so tiles running at once take turns at it. Throws std::invalid_argument when no tile takes part,
/// std::runtime_error naming a file that can't be written. Returns the paths written.
std::vector<std::filesystem::path> write_slurm_tile_jobs(const std::filesystem::path& run_directory,
                                                         const std::vector<std::string>& tile_folders,
                                                         const std::string& job_name,
                                                         const SlurmResources& resources);

/// The Slurm files of the package in `run_directory`: tile jobs when it holds "iter_all.bat", else
/// the one job of its start script. Throws as the writers do, std::invalid_argument when the folder
/// holds no package.
std::vector<std::filesystem::path> write_slurm_files(const std::filesystem::path& run_directory,
                                                     const SlurmResources& resources);

}  // namespace invsetup
