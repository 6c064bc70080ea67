// apps/cli/size_report.cpp - the size estimate that `check` prints after its summary.
#include "size_report.h"

#include <iostream>

#include "create/size_estimate.h"
#include "session.h"

namespace invsetup::cli {

void add_size_options(CLI::App& command, SizeOptions& options) {
    command.add_flag("--suggest-tiles", options.suggest_tiles,
                     "Propose a tile size that keeps each tile's sensitivity matrix under --tile-memory");
    command.add_option("--tile-memory", options.tile_memory,
                       "Largest tile matrix for --suggest-tiles, such as 8G or 512M (default: half this machine's "
                       "memory)");
}

int print_size_estimate(const Session& session, const SizeOptions& options, const SizeEstimate& estimate) {
    double limit = machine_memory_bytes() / 2;
    if (!options.tile_memory.empty() && !parse_byte_size(options.tile_memory, limit)) {
        std::cerr << "invsetup: --tile-memory " << options.tile_memory << " is not a size (such as 8G or 512M)\n";
        return 1;
    }
    std::cout << "Size estimate:\n";
    for (const std::string& line : size_report(estimate)) std::cout << "  " << line << '\n';
    if (options.suggest_tiles) {
        const int overlap = session.definition.tile_overlap;
        std::cout << "  " << tile_suggestion_text(suggest_tile_size(estimate, overlap, limit), overlap, limit) << '\n';
    }
    return 0;
}

}  // namespace invsetup::cli
