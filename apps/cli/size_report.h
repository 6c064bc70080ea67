// apps/cli/size_report.h - the size estimate of `check`: its options and its report.
#pragma once
#include <CLI/CLI.hpp>

#include <string>

namespace invsetup {
struct Session;
struct SizeEstimate;
}

namespace invsetup::cli {

struct SizeOptions {
    bool suggest_tiles = false;
    std::string tile_memory;
};

void add_size_options(CLI::App& command, SizeOptions& options);

/// Prints the estimate made for the checked definition in `session`, and the tile suggestion when
/// asked. Returns the exit status: 0, or 1 after the message.
int print_size_estimate(const Session& session, const SizeOptions& options, const SizeEstimate& estimate);

}  // namespace invsetup::cli
