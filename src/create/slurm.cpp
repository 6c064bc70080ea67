// src/create/slurm.cpp - Slurm job scripts for a run package.
#include "create/slurm.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "create/shell_twin.h"
#include "create/size_estimate.h"
#include "support/lines.h"
#include "support/text.h"

namespace invsetup {

namespace {

namespace fs = std::filesystem;

constexpr double gib = 1024.0 * 1024.0 * 1024.0;

/// An sh script with LF lines, executable.
void write_script(const fs::path& path, const std::string& text) {
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        if (!out) throw std::runtime_error("cannot create " + path.string());
        out << text;
        if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
    }
    std::error_code error;
    fs::permissions(path,
                    fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec | fs::perms::others_read |
                        fs::perms::others_exec,
                    fs::perm_options::replace, error);
    if (error) throw std::runtime_error("cannot make " + path.string() + " executable: " + error.message());
}

/// The #SBATCH head of a job; `output` names its log in the run folder.
std::string job_head(const std::string& job_name, const SlurmResources& resources, const std::string& output,
                     const std::string& extra = "") {
    std::string head = "#!/bin/sh\n#SBATCH --job-name=" + job_name + "\n" + extra + "#SBATCH --cpus-per-task=" +
                       std::to_string(resources.cpus) + "\n#SBATCH --mem=" + resources.memory + "\n#SBATCH --time=" +
                       resources.time + "\n";
    if (!resources.partition.empty()) head += "#SBATCH --partition=" + resources.partition + "\n";
    head += "#SBATCH --output=" + output + "\n";
    return head;
}

/// A job name Slurm and a shell both take: letters, digits, "-", "_", ".".
std::string clean_job_name(const std::string& name) {
    std::string clean;
    for (char c : name) clean += std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_' || c == '.' ? c : '_';
    return clean.empty() ? "invsetup" : clean;
}

const char* const thread_lines =
    "# Threaded programs take as many threads as the job has CPUs.\n"
    "OMP_NUM_THREADS=${SLURM_CPUS_PER_TASK:-1}; export OMP_NUM_THREADS\n";

}  // namespace

SlurmResources slurm_resources_for(const SizeEstimate& estimate, int thread_count) {
    SlurmResources resources;
    resources.memory = slurm_memory_text(std::max(gib, estimate.memory_bytes * 1.25));
    const double matrix = estimate.tiles.empty() ? estimate.matrix_bytes : estimate.largest_tile_bytes;
    resources.cpus = thread_count > 0 ? thread_count : std::clamp(static_cast<int>(std::ceil(matrix / (4 * gib))), 1, 16);
    const double entries = matrix / 4;
    const double seconds = 2 * entries * (100 + 2000) / (1e9 * resources.cpus);
    const long long hours = std::max(1LL, static_cast<long long>(std::ceil(seconds / 3600)));
    char text[32];
    if (hours < 24) std::snprintf(text, sizeof text, "%02lld:00:00", hours);
    else std::snprintf(text, sizeof text, "%lld-%02lld:00:00", hours / 24, hours % 24);
    resources.time = text;
    return resources;
}

std::string slurm_memory_text(double bytes) {
    const double mib = std::ceil(bytes / (1024.0 * 1024.0));
    char text[32];
    std::snprintf(text, sizeof text, "%.0fM", std::max(1.0, mib));
    return text;
}

bool is_slurm_time(const std::string& text) {
    const std::size_t first = text.find(':');
    const std::size_t second = first == std::string::npos ? first : text.find(':', first + 1);
    if (second == std::string::npos || text.size() - second != 3 || second - first != 3 || first == 0) return false;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (at != first && at != second && std::isdigit(static_cast<unsigned char>(text[at])) == 0) return false;
    return std::stoi(text.substr(first + 1, 2)) < 60 && std::stoi(text.substr(second + 1, 2)) < 60;
}

std::vector<std::string> kept_tiles(const fs::path& iter_all_batch) {
    std::ifstream in(iter_all_batch, std::ios::binary);
    if (!in) throw std::runtime_error("cannot open " + iter_all_batch.string());
    std::vector<std::string> tiles;
    for (std::string line; read_line(in, line);) {
        const std::string text = trim(line);
        if (text.size() <= 9 || text.compare(0, 5, "call ") != 0) continue;
        std::string name = trim(text.substr(5));
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".bat") == 0) tiles.push_back(name.substr(0, name.size() - 4));
    }
    return tiles;
}

fs::path write_slurm_job(const fs::path& run_directory, const std::string& script, const std::string& job_name,
                         const SlurmResources& resources) {
    const fs::path path = run_directory / "submit.slurm";
    write_script(path, job_head(clean_job_name(job_name), resources, "slurm-%j.log") +
                           "# Submit it from this folder: sbatch submit.slurm\n"
                           "set -e\n"
                           "cd \"${SLURM_SUBMIT_DIR:-.}\"\n" +
                           thread_lines + "sh ./" + script + "\n");
    return path;
}

std::vector<fs::path> write_slurm_tile_jobs(const fs::path& run_directory, const std::vector<std::string>& tile_folders,
                                            const std::string& job_name, const SlurmResources& resources) {
    if (tile_folders.empty()) throw std::invalid_argument("no tile takes part in the run: there is nothing to submit");
    const std::string name = clean_job_name(job_name);
    std::vector<fs::path> written;

    std::string tiles = job_head(name + "-tiles", resources, "slurm-tiles-%A_%a.log",
                                 "#SBATCH --array=1-" + std::to_string(tile_folders.size()) + "\n") +
                        "# One task for each tile that takes part: it runs the tile's script in the tile's folder.\n"
                        "set -e\n"
                        "cd \"$SLURM_SUBMIT_DIR\"\n"
                        "case $SLURM_ARRAY_TASK_ID in\n";
    for (std::size_t n = 0; n < tile_folders.size(); ++n)
        tiles += "    " + std::to_string(n + 1) + ") tile=" + tile_folders[n] + " ;;\n";
    tiles += "    *) echo \"no tile for task $SLURM_ARRAY_TASK_ID\" >&2; exit 1 ;;\n"
             "esac\n" +
             std::string(thread_lines) +
             "# The tiles put their models into the run's one model: the insert programs take turns.\n"
             "INVSETUP_PATH=$PATH; export INVSETUP_PATH\n"
             "PATH=$(pwd)/slurm_bin:$PATH; export PATH\n"
             "cd \"$tile\"\n"
             "sh \"../$tile.sh\"\n";
    written.push_back(run_directory / "tiles.slurm");
    write_script(written.back(), tiles);

    SlurmResources merge_resources = resources;
    merge_resources.cpus = 1;
    written.push_back(run_directory / "merge.slurm");
    write_script(written.back(), job_head(name + "-merge", merge_resources, "slurm-merge-%j.log") +
                                     "# Once every tile has ended well: the tiles' models into the run's model again,\n"
                                     "# one after another.\n"
                                     "set -e\n"
                                     "cd \"$SLURM_SUBMIT_DIR\"\n"
                                     "sh ./insert_all.sh\n");

    fs::create_directories(run_directory / "slurm_bin");
    for (const char* program : {"Vorlinsert", "Zarninsert"}) {
        written.push_back(run_directory / "slurm_bin" / program);
        write_script(written.back(), std::string("#!/bin/sh\n"
                                                 "# Tiles running at once take turns at the run's model.\n"
                                                 "lock=$(dirname \"$0\")/../.insert.lock\n"
                                                 "PATH=$INVSETUP_PATH exec flock \"$lock\" ") +
                                         program + " \"$@\"\n");
    }

    written.push_back(run_directory / "submit.sh");
    write_script(written.back(),
                 "#!/bin/sh\n"
                 "# Submits the tiles of this run as one job array, and the merge as a job that starts when every\n"
                 "# tile has ended well.\n"
                 "set -e\n"
                 "cd \"$(dirname \"$0\")\"\n"
                 "tiles=$(sbatch --parsable --chdir=\"$(pwd)\" tiles.slurm)\n"
                 "tiles=${tiles%%;*}\n"
                 "merge=$(sbatch --parsable --chdir=\"$(pwd)\" --dependency=afterok:$tiles merge.slurm)\n"
                 "merge=${merge%%;*}\n"
                 "echo \"Submitted job array $tiles (" +
                     std::to_string(tile_folders.size()) +
                     " tiles) and the merge, job $merge, after it\"\n");
    return written;
}

std::vector<fs::path> write_slurm_files(const fs::path& run_directory, const SlurmResources& resources) {
    const std::string job_name = run_directory.filename().empty() ? run_directory.parent_path().filename().string()
                                                                  : run_directory.filename().string();
    if (fs::exists(run_directory / "iter_all.bat"))
        return write_slurm_tile_jobs(run_directory, kept_tiles(run_directory / "iter_all.bat"), job_name, resources);
    const fs::path script = start_script_in(run_directory);
    if (script.empty()) throw std::invalid_argument(run_directory.string() + " holds no run package");
    return {write_slurm_job(run_directory, script.filename().string(), job_name, resources)};
}

}  // namespace invsetup
