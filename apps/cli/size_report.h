// apps/cli/size_report.h - the size estimate of `check`: its options and its report.
#pragma once
#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

namespace invsetup {
struct Session;
}

namespace invsetup::cli {

struct SizeOptions {
    bool suggest_tiles = false;
    std::string tile_memory;
};

void add_size_options(CLI::App& command, SizeOptions& options);

/// Prints the estimate for the checked definition in `session` (its mesh built); the free disk is
/// that of `run_folder`. Returns the exit status: 0, or 1 after the message.
int print_size_estimate(Session& session, const SizeOptions& options, const std::filesystem::path& run_folder);

}  // namespace invsetup::cli
