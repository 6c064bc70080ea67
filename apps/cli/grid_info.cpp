// apps/cli/grid_info.cpp - grid-info: what a grid file holds (kind, size, limits, spacings,
// statistics), or where a raster picture lies.
#include <iostream>
#include <string>

#include "commands.h"
#include "grids/grid_access.h"
#include "grids/image_record.h"
#include "session.h"
#include "support/numbers.h"

namespace invsetup::cli {

namespace {

void print_value(const std::string& label, double value) {
    std::cout << label << ": " << general_number_text(value) << '\n';
}

void print_limits(const Array1<int>& ints, const Array1<double>& reals) {
    std::cout << "Columns: " << ints[grid_int::columns] << '\n';
    std::cout << "Rows: " << ints[grid_int::rows] << '\n';
    print_value("X minimum", reals[grid_real::x_min]);
    print_value("X maximum", reals[grid_real::x_max]);
    print_value("Y minimum", reals[grid_real::y_min]);
    print_value("Y maximum", reals[grid_real::y_max]);
    print_value("X spacing", reals[grid_real::x_spacing]);
    print_value("Y spacing", reals[grid_real::y_spacing]);
}

const char* sidecar_kind_name(SidecarKind kind) {
    switch (kind) {
    case SidecarKind::world_file: return "world file";
    case SidecarKind::tiff_tags: return "TIFF tags";
    case SidecarKind::grf: return "GRF file";
    case SidecarKind::envi_header: return "ENVI header";
    case SidecarKind::egb: return "EGB georeference file";
    case SidecarKind::control_points: return "MapInfo control points";
    case SidecarKind::none: break;
    }
    return "none";
}

// A picture placed by a sidecar (or not at all) is described as a picture; a TIFF placed by its
// own tags is a grid as well and falls through to the grid report.
bool print_raster(const ImageRecord& record) {
    if (record.grid_ints[grid_int::kind] != grid_kind_raster ||
        record.grid_ints[grid_int::sub_kind] == raster_geotiff)
        return false;
    std::cout << "File: " << record.file_name << '\n';
    std::cout << "Kind: " << grid_kind_raster << " (raster picture)\n";
    if (record.grid_ints[grid_int::sub_kind] == raster_unplaced) {
        std::cout << "Georeference: none (limits are pixel numbers)\n";
    } else {
        std::cout << "Georeference: " << sidecar_kind_name(record.georeference.kind) << ' ' << record.sidecar_name
                  << '\n';
    }
    print_limits(record.grid_ints, record.grid_reals);
    return true;
}

int run_grid_info(const std::string& file_name) {
    HeadlessDialogue dialogue(&std::cerr);
    Session session(dialogue);
    ImageRecord record;
    if (read_image_record(session, record, file_name, 1, false) >= 0 && print_raster(record)) return 0;
    if (!dialogue.messages.empty()) return 1;  // a missing file has been told

    GridWindow grid;
    std::string text;
    Array1<int> ints;
    Array1<double> reals;
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0;  // not in order: the whole grid
    int status = 0;
    read_grid_header(session, file_name, grid, text, ints, reals, x_min, x_max, y_min, y_max, status);
    if (status < 0) return 1;
    GridStatistics statistics;
    GRDSTAT(grid, statistics, status);

    std::cout << "File: " << file_name << '\n';
    std::cout << "Format: " << text << " (" << grid_format_name(file_name) << ")\n";
    std::cout << "Kind: " << ints[grid_int::kind] << '\n';
    print_limits(ints, reals);
    std::cout << "Present values: " << statistics.present_count << '\n';
    std::cout << "Null values: " << statistics.null_count << '\n';
    if (status >= 0) {
        print_value("Mean", statistics.mean);
        print_value("Minimum", statistics.minimum);
        print_value("Maximum", statistics.maximum);
        print_value("Standard deviation", statistics.standard_deviation);
    }
    return 0;
}

}  // namespace

void register_grid_info_command(CLI::App& app, int& exit_code) {
    CLI::App* command = app.add_subcommand("grid-info", "Print the header and statistics of a grid, or where a picture lies");
    auto file_name = std::make_shared<std::string>();
    command->add_option("file", *file_name, "Grid or raster file")->required();
    command->callback([file_name, &exit_code] { exit_code = run_grid_info(*file_name); });
}

}  // namespace invsetup::cli
