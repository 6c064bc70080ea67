// apps/cli/cluster_options.cpp - `create --cluster slurm`.
#include "cluster_options.h"

#include <iostream>

#include "commands.h"
#include "create/size_estimate.h"
#include "create/slurm.h"
#include "definition/definition_checks.h"
#include "session.h"
#include "support/dialogue.h"

namespace invsetup::cli {

void add_cluster_options(CLI::App& command, ClusterOptions& options) {
    CLI::Option* cluster =
        command
            .add_option("--cluster", options.cluster,
                        "Add job scripts for a cluster: slurm (submit.slurm, or for a tiled run a job array and a "
                        "merge job submitted by submit.sh)")
            ->check(CLI::IsMember({"slurm"}));
    command.add_option("--cpus", options.cpus, "CPUs per job (default: from the size estimate)")
        ->check(CLI::Range(1, 4096))
        ->needs(cluster);
    command
        .add_option("--mem", options.memory, "Memory per job, such as 16G or 512M (default: from the size estimate)")
        ->check(CLI::Validator(
            [](std::string& text) {
                double bytes = 0;
                return parse_byte_size(text, bytes) ? std::string() : "not a memory size such as 16G or 512M";
            },
            "SIZE"))
        ->needs(cluster);
    command.add_option("--time", options.time, "Time limit per job, HH:MM:SS (default: from the size estimate)")
        ->check(CLI::Validator(
            [](std::string& text) { return is_slurm_time(text) ? std::string() : "not a time of the form HH:MM:SS"; },
            "HH:MM:SS"))
        ->needs(cluster);
    command.add_option("--partition", options.partition, "Partition of the jobs (default: the cluster's)")
        ->needs(cluster);
}

int write_cluster_files(const ClusterOptions& options, const std::filesystem::path& definition,
                        const std::filesystem::path& working_directory, const std::filesystem::path& run, bool quiet) {
    if (options.cluster.empty()) return 0;
    SlurmResources resources;
    if (options.cpus <= 0 || options.memory.empty() || options.time.empty()) {
        // The defaults: the size of the run, from a reading of the definition that says nothing (the
        // creation has said all there is to say about it).
        HeadlessDialogue silent;
        Session session(silent);
        SizeEstimate estimate;
        if (read_definition(session, silent, definition, 0, working_directory) &&
            check_inversion_definitions(session) >= 0 && estimate_run_size(session, {}, estimate) >= 0)
            resources = slurm_resources_for(estimate, session.definition.number_of_threads);
    }
    if (options.cpus > 0) resources.cpus = options.cpus;
    if (!options.memory.empty()) {
        double bytes = 0;
        parse_byte_size(options.memory, bytes);
        resources.memory = slurm_memory_text(bytes);
    }
    if (!options.time.empty()) resources.time = options.time;
    resources.partition = options.partition;
    try {
        const std::vector<std::filesystem::path> written = write_slurm_files(run, resources);
        if (!quiet) {
            std::cerr << "Slurm jobs (" << resources.cpus << " CPUs, " << resources.memory << ", " << resources.time
                      << " each):";
            for (const std::filesystem::path& path : written) std::cerr << ' ' << path.lexically_relative(run).string();
            std::cerr << '\n';
        }
    } catch (const std::exception& fault) {
        std::cerr << "invsetup: the Slurm job scripts could not be written: " << fault.what() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace invsetup::cli
