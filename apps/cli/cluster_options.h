// apps/cli/cluster_options.h - `create --cluster slurm`: the job options and the job scripts written
// beside the package.
#pragma once
#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

namespace invsetup::cli {

struct ClusterOptions {
    std::string cluster;  // "" or "slurm"
    int cpus = 0;         // 0: from the size estimate
    std::string memory;   // "": from the size estimate
    std::string time;     // "": from the size estimate
    std::string partition;
};

void add_cluster_options(CLI::App& command, ClusterOptions& options);

/// After a package was written into `run`: the job scripts for its cluster, with what the options
/// leave open taken from the size estimate of `definition` (read again in a session of its own).
/// Returns the exit status: 0, or 1 after the message.
int write_cluster_files(const ClusterOptions& options, const std::filesystem::path& definition,
                        const std::filesystem::path& working_directory, const std::filesystem::path& run, bool quiet);

}  // namespace invsetup::cli
