// src/create/merge_scripts.cpp - "iter_all.bat", "insert_all.bat" and the tiles' observation files.
#include "create/merge_scripts.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "create/batch_files.h"
#include "create/create_inversion.h"
#include "create/run_names.h"
#include "create/tile_files.h"
#include "data/observation_file.h"
#include "session.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

/// A tile's mark, read with the indices as the walk gives them: the table has a row per x tile and
/// a column per y tile, and an index beyond them is a fault.
int skip_mark(TileTable& tiles, const InversionDefinition& definition, int first, int second) {
    if (first < 0 || first > definition.number_of_x_tiles || second < 0 || second > definition.number_of_y_tiles)
        throw std::out_of_range("Subscript out of range");
    return tiles.tile_skip(first, second);
}

std::vector<std::string> insert_all_head(const InversionDefinition& definition) {
    const bool magnetic = definition.data_types[0] == 100 || definition.data_types[0] == 1 ||
                          definition.data_types[0] >= 20;
    std::vector<std::string> lines{"", "rem Clean up any previously merged data files", "",
                                   "@if exist zarninv3d_weights.dat del zarninv3d_weights.dat",
                                   "@if exist zarninv3d.old del zarninv3d.old"};
    if (magnetic)
        lines.insert(lines.end(), {"@if exist zarninv3d.sus ren zarninv3d.sus zarninv3d.old",
                                   "@if exist refined.sus copy refined.sus zarninv3d.sus"});
    else
        lines.insert(lines.end(), {"@if exist zarninv3d.den ren zarninv3d.den zarninv3d.old",
                                   "@if exist refined.den copy refined.den zarninv3d.den"});
    lines.insert(lines.end(), {"@if exist error.dat del error.dat", ""});
    return lines;
}

}  // namespace

int write_merge_scripts(Session& session, const std::filesystem::path& run_directory) {
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    TileTable& tiles = session.tiles;
    const std::filesystem::path iter_path = run_directory / "iter_all.bat";
    const std::filesystem::path insert_path = run_directory / "insert_all.bat";
    std::vector<std::string> iter_lines;
    std::vector<std::string> insert_lines = insert_all_head(d);
    const auto write_scripts = [&] {
        write_batch_file(iter_path, iter_lines);
        write_batch_file(insert_path, insert_lines);
    };

    // The walk follows the order lists of the form: the layout has set the definition's copy to 0.
    int order[3];
    for (int k = 0; k < 3; ++k) order[k] = session.form.list_index("Combo_tile_order", k) == 1 ? 1 : 0;
    const bool by_row = order[0] == 1;
    const int outer_count = by_row ? d.number_of_y_tiles : d.number_of_x_tiles;
    const int inner_count = by_row ? d.number_of_x_tiles : d.number_of_y_tiles;
    const bool gravity_family = is_gravity_method(d.inversion_method);
    const bool magnetic = d.inversion_method == method_zarninv3d ? uses_magnetic_names(d)
                                                                 : is_magnetic_method(d.inversion_method);
    const std::string extension =
        d.tile_use_reference != 0 && d.inversion_method != method_zarninv3d ? ".dat" : ".obs";
    // The gravity family never names its tile files: the name is the last one used, which grows.
    std::filesystem::path data_name = iter_path;

    for (int outer = 1; outer <= outer_count; ++outer) {
        for (int inner = 1; inner <= inner_count; ++inner) {
            const int x_counter = by_row ? inner : outer;
            const int y_counter = by_row ? outer : inner;
            const int j = order[1] == 1 ? d.number_of_y_tiles + 1 - y_counter : y_counter;
            const int i = order[2] == 1 ? d.number_of_x_tiles + 1 - x_counter : x_counter;
            const int mark = by_row ? skip_mark(tiles, d, j, i) : skip_mark(tiles, d, i, j);
            const bool takes_part = mark != 1;
            if (d.use_expanded_mesh != 0) set_expanded_mesh_limits(session, i, j);
            const std::string digits = format_picture(i, "00") + format_picture(j, "00");
            append_progress(session, "Processing tile " + digits);

            if (gravity_family)
                data_name += extension;
            else
                data_name = run_directory / tile_name(i, j) / ((magnetic ? "mag" : "grav") + extension);
            int tile_data_count = 0;
            if (write_inversion_data(session, 0, data_name, tiles.tile_x_limits(i, tile_outer_start),
                                     tiles.tile_x_limits(i, tile_outer_end), tiles.tile_y_limits(j, tile_outer_start),
                                     tiles.tile_y_limits(j, tile_outer_end), d.use_expanded_mesh != 0 ? 1 : 0,
                                     tile_data_count) < 0) {
                write_scripts();
                return -1;
            }
            const std::string prefix = takes_part && tile_data_count > d.tile_min_points ? "" : "rem ";

            iter_lines.push_back("rem Num data " + format_picture(tile_data_count, "0"));
            iter_lines.push_back(prefix + "call tile" + digits + ".bat");

            insert_lines.push_back(
                "rem Boundaries: " + format_picture(mesh.x_nodes[tiles.tile_x_limits(i, tile_core_start)], "0.00000") +
                " " + format_picture(mesh.x_nodes[tiles.tile_x_limits(i, tile_core_end)], "0.00000") + " " +
                format_picture(mesh.y_nodes[tiles.tile_y_limits(j, tile_core_start)], "0.00000") + " " +
                format_picture(mesh.y_nodes[tiles.tile_y_limits(j, tile_core_end)], "0.00000"));
            insert_lines.push_back(prefix + "cd tile" + digits);
            insert_lines.push_back(prefix + tile_insert_line(d, tiles, i, j, d.mesh_cell_count[2]));
            insert_lines.push_back(prefix + "cd ..");
            insert_lines.emplace_back("");
        }
        iter_lines.emplace_back("");
        insert_lines.emplace_back("");
    }
    write_scripts();
    return 0;
}

}  // namespace invsetup
