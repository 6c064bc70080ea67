// src/create/tile_files.cpp - the run files of the tiles of a refinement run.
#include "create/tile_files.h"

#include <filesystem>
#include <optional>

#include "create/batch_files.h"
#include "create/create_inversion.h"
#include "create/inversion_input.h"
#include "create/run_names.h"
#include "create/sensitivity_input.h"
#include "session.h"
#include "support/files.h"
#include "support/lines.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

namespace {

constexpr char quote = '"';

std::string whole(int value) { return format_picture(value, "0"); }

bool in_house(const InversionDefinition& d) { return d.inversion_method == method_zarninv3d; }
bool magnetic_family(const InversionDefinition& d) { return is_magnetic_method(d.inversion_method); }
bool gravity_family(const InversionDefinition& d) { return is_gravity_method(d.inversion_method); }
bool use_regional_mesh(const InversionDefinition& d) { return d.include_regional_mesh != 0 && in_house(d); }
bool extract_with_rock_properties(const InversionDefinition& d) {
    return d.rock_properties_used && d.rock_application != 1;
}

/// The run directory with a closing separator, in the back-slash form of the batch files' paths.
std::string tile_directory_text(const RunContext& context, int i, int j) {
    std::string run = windows_path(context.run_directory.string());
    if (run.empty() || run.back() != '\\') run.push_back('\\');
    return run + tile_name(i, j) + "\\";
}

/// The cell range of a tile for the extraction tools: outer cells in x and y, the tile's z cells.
std::string tile_limits(const InversionDefinition& d, const TileTable& tiles, int i, int j, int nz) {
    std::string limits = whole(tiles.tile_x_limits(i, tile_outer_start)) + " " +
                         whole(tiles.tile_x_limits(i, tile_outer_end) - 1) + " " +
                         whole(tiles.tile_y_limits(j, tile_outer_start)) + " " +
                         whole(tiles.tile_y_limits(j, tile_outer_end) - 1) + " 1 " + whole(tile_z_cells(d, nz));
    if (d.use_expanded_mesh != 0) limits += " -Expand";
    return limits;
}

/// The directory of the coarse sensitivity matrix, seen from the tile directory, with its closing
/// back-slash.
std::string coarse_matrix_path(Session& session, const std::string& tile_directory) {
    const InversionDefinition& d = session.definition;
    const std::string model_directory = directory_of(session.original_model_name);
    std::string matrix_path =
        model_directory.empty() ? std::string("..\\..\\") : relative_path(tile_directory, model_directory + "\\");
    const std::string probe = d.data_type_count > 1
                                  ? "zarnpre3d " + std::string(1, quote) + matrix_path + d.sensitivity_matrix_names[0]
                                  : "zarnpre3d " + matrix_path + "zarninv3d.mtx ";
    if (!find_file(probe).empty()) return matrix_path;
    FileChoice request;
    request.title = "Select the location of the coarse model MTX file";
    request.filter = "MTX files|*.mtx|All files (*.*)|*.*";
    const std::optional<std::string> choice = session.dialogue.choose_file(request);
    if (choice) return relative_path(tile_directory, directory_of(resolve_path(session.working_directory, *choice).string()) + "\\");
    session.dialogue.message_box(
        "Warning: The tiling may not work correctly if the MTX file does not exist when the inversion is run");
    return "..\\..\\";
}

void add_forward_model(Session& session, const RunContext& context, int i, int j, std::string limits,
                       std::vector<std::string>& lines) {
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    const TileTable& tiles = session.tiles;
    const bool magnetic_names = uses_magnetic_names(d);
    if (!in_house(d)) {
        limits += magnetic_family(d) ? " ..\\mag.obs" : " ..\\grav.obs";
        if (d.topo_type == 0) limits += " ..\\topo.dat";
    }
    lines.insert(lines.end(), {" ", "rem run coarse forward model and calculate residual", " "});
    if (!in_house(d))
        lines.push_back(magnetic_family(d) ? "@if exist mag.obs goto skipForwardModel:"
                                           : "@if exist grav.obs goto skipForwardModel:");
    lines.emplace_back(" ");
    std::string model_names;
    if (magnetic_family(d))
        model_names = "..\\refined.sus maginv3d.mod ";
    else if (gravity_family(d))
        model_names = "..\\refined.den gzinv3d.mod ";
    else
        model_names = magnetic_names ? "..\\refined.sus zarninv3d_tile.sus " : "..\\refined.den zarninv3d_tile.den ";
    const char* tool = in_house(d) ? "Zarnextract" : "Vorlextract";
    lines.push_back(std::string(tool) + " ..\\mesh " + model_names + " " + limits);
    lines.emplace_back(" ");

    const std::string tile_directory = tile_directory_text(context, i, j);
    const std::string coarse_mesh = relative_path(tile_directory, session.original_mesh_name);
    const std::string coarse_model = relative_path(tile_directory, session.original_model_name);
    lines.push_back("copy " + coarse_mesh + " tilenull.msh");
    const bool null_magnetic = magnetic_family(d) || (in_house(d) && magnetic_names);
    const int bottom_node = use_regional_mesh(d) ? mesh.nz + 1 : tile_z_cells(d, mesh.nz) + 1;
    lines.push_back(std::string(in_house(d) ? "Zarnnullvol" : "Vorlnullvol") + " " + coarse_mesh + " " + coarse_model +
                    (null_magnetic ? " tilenull.sus " : " tilenull.den ") +
                    format_picture(mesh.x_nodes[tiles.tile_x_limits(i, tile_outer_start)], "0.00") + " " +
                    format_picture(mesh.x_nodes[tiles.tile_x_limits(i, tile_outer_end)], "0.00") + " " +
                    format_picture(mesh.y_nodes[tiles.tile_y_limits(j, tile_outer_start)], "0.00") + " " +
                    format_picture(mesh.y_nodes[tiles.tile_y_limits(j, tile_outer_end)], "0.00") + " " +
                    format_picture(mesh.z_nodes[bottom_node], "0.000") + " " +
                    format_picture(mesh.z_nodes[1], "0.000"));
    lines.emplace_back(" ");

    std::string forward;
    if (in_house(d)) {
        const std::string matrix_path = coarse_matrix_path(session, tile_directory);
        if (d.data_type_count > 1) {
            forward = "zarnpre3d " + std::string(1, quote);
            for (int k = 0; k < d.data_type_count; ++k) {
                if (k > 0) forward += '|';
                forward += matrix_path + d.sensitivity_matrix_names.at(static_cast<std::size_t>(k));
            }
            forward += std::string(1, quote) + " ";
        } else {
            forward = "zarnpre3d " + matrix_path + "zarninv3d.mtx ";
        }
        forward += magnetic_names ? "tilenull.sus mag_null.obs mag.obs" : "tilenull.den grav_null.obs grav.obs";
        forward += " MASK=0";
    } else {
        forward = magnetic_family(d) ? "magfor3d tilenull.msh mag.dat tilenull.sus"
                                     : "gzfor3d tilenull.msh grav.dat tilenull.den";
        if (d.topo_type == 0) {
            const std::size_t last = coarse_mesh.rfind('\\');
            forward += " " + (last == std::string::npos ? std::string() : coarse_mesh.substr(0, last + 1)) + "topo.dat";
        }
    }
    lines.push_back(forward);
    lines.emplace_back(" ");
    if (magnetic_family(d))
        lines.push_back("Vorldelreg mag.dat - magfor3d.mag mag.obs " + number_to_text(d.error_percent) + " " +
                        number_to_text(d.error_floor));
    else if (gravity_family(d))
        lines.push_back("Vorldelreg grav.dat - gzfor3d.grv grav.obs " + number_to_text(d.error_percent) + " " +
                        number_to_text(d.error_floor));
    if (!in_house(d)) lines.insert(lines.end(), {" ", ":skipForwardModel"});
    lines.emplace_back(" ");
}

void add_sensitivity(const InversionDefinition& d, const RunContext& context, int i, int j,
                     std::vector<std::string>& lines) {
    const int method = d.inversion_method;
    if (magnetic_family(d)) {
        lines.emplace_back("@if exist maginv3d.mtx goto skipsen:");
        if (method == method_ubc_mag_v5) lines.push_back("pfweight mag_weights.inp" + context.thread_suffix);
        lines.emplace_back("magsen3d magsen3d.inp");
    } else if (in_house(d)) {
        if (d.data_type_count > 1) {
            for (int k = 0; k < d.data_type_count; ++k)
                lines.push_back("@if not exist " + d.sensitivity_matrix_names.at(static_cast<std::size_t>(k)) +
                                " goto doMTX:");
            lines.insert(lines.end(), {"goto skipsen:", " ", ":doMTX"});
        } else {
            lines.emplace_back("@if exist zarninv3d.mtx goto skipsen:");
        }
        if (d.use_cluster_controller == 0) {
            lines.emplace_back("zarnsen3d zarnsen3d.inp");
        } else {
            lines.push_back(cluster_server_line());
            lines.push_back("zarnsen3d_cluster_controller " + std::string(1, quote) + "%~dp0" + tile_name(i, j) +
                            std::string(1, quote));
        }
    } else {
        lines.emplace_back("@if exist gzinv3d.mtx goto skipsen:");
        if (method == method_ubc_grav_v5) lines.push_back("pfweight gz_weights.inp" + context.thread_suffix);
        if (method == method_ubc_grav_v3 || method == method_ubc_grav_v5)
            lines.emplace_back("gzsen3d gzsen3d.inp");
        else
            lines.emplace_back(d.topo_type == 0 ? "gzsen3d mesh grav.obs topo.dat" : "gzsen3d mesh grav.obs");
    }
    lines.insert(lines.end(), {" ", ":skipsen", " "});
}

/// The sensitivity input files a tile takes from the run directory.
std::vector<std::string> sensitivity_copies(int method) {
    switch (method) {
        case method_ubc_mag_v5: return {"mag_weights.inp", "magsen3d.inp"};
        case method_ubc_mag_v3:
        case method_ubc_mag_v4: return {"magsen3d.inp"};
        case method_ubc_grav_v5: return {"gz_weights.inp", "gzsen3d.inp"};
        case method_ubc_grav_v3: return {"gzsen3d.inp"};
        case method_zarninv3d: return {"zarnsen3d.inp"};
        default: return {};
    }
}

void copy_replacing(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code fault;
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, fault);
    if (fault) throw std::runtime_error("cannot copy " + from.string() + " to " + to.string() + ": " + fault.message());
}

}  // namespace

std::string tile_name(int i, int j) { return "tile" + format_picture(i, "00") + format_picture(j, "00"); }

int tile_z_cells(const InversionDefinition& definition, int nz) {
    if (use_regional_mesh(definition)) return nz;
    return definition.mesh_cell_count[2] + definition.tile_z_blend;
}

std::string tile_insert_line(const InversionDefinition& d, const TileTable& tiles, int i, int j, int z_cells) {
    std::string line;
    if (magnetic_family(d))
        line = "Vorlinsert mesh maginv3d.sus ..\\mesh ..\\maginv3d.sus ";
    else if (gravity_family(d))
        line = "Vorlinsert mesh gzinv3d.den ..\\mesh ..\\gzinv3d.den ";
    else
        line = uses_magnetic_names(d) ? "Zarninsert mesh zarninv3d.sus ..\\mesh ..\\zarninv3d.sus "
                                      : "Zarninsert mesh zarninv3d.den ..\\mesh ..\\zarninv3d.den ";
    line += whole(tiles.tile_x_limits(i, tile_core_start)) + " " + whole(tiles.tile_x_limits(i, tile_core_end) - 1) +
            " " + whole(tiles.tile_y_limits(j, tile_core_start)) + " " +
            whole(tiles.tile_y_limits(j, tile_core_end) - 1) + " 1 " + whole(z_cells);
    // The z blend is the second of two positional numbers: it is written only behind an xy blend.
    if (d.tile_xy_blend > 0) {
        line += " " + whole(d.tile_xy_blend);
        if (d.tile_z_blend > 0) line += " " + whole(d.tile_z_blend);
    }
    return line;
}

std::vector<std::string> tile_batch_lines(Session& session, const RunContext& context, int i, int j) {
    const InversionDefinition& d = session.definition;
    const InversionMesh& mesh = session.mesh;
    const TileTable& tiles = session.tiles;
    const int method = d.inversion_method;
    const std::string tool = in_house(d) ? "Zarnextract" : "Vorlextract";
    const std::string limits = tile_limits(d, tiles, i, j, mesh.nz);
    const bool rock = extract_with_rock_properties(d);
    std::vector<std::string> lines;

    const int xc = tiles.tile_x_limits(i, tile_core_start), xe = tiles.tile_x_limits(i, tile_core_end);
    const int yc = tiles.tile_y_limits(j, tile_core_start), ye = tiles.tile_y_limits(j, tile_core_end);
    lines.push_back("rem Coord Boundaries: " + format_picture(mesh.x_nodes[xc], "0.00000") + " " +
                    format_picture(mesh.x_nodes[xe], "0.00000") + " " + format_picture(mesh.y_nodes[yc], "0.00000") +
                    " " + format_picture(mesh.y_nodes[ye], "0.00000"));
    lines.push_back("rem Cell Boundaries: " + whole(xc) + " " + whole(xe) + " " + whole(yc) + " " + whole(ye));
    lines.insert(lines.end(), {" ", "cd " + tile_name(i, j), " "});

    const std::string initial = trim(d.initial_model_file);
    if (!initial.empty() && !iequals(initial, "NULL") && !is_numeric(initial)) {
        const std::string name = file_name_only(initial);
        lines.insert(lines.end(), {" ", "rem extract initial model", " "});
        lines.push_back(tool + " ..\\mesh ..\\" + name + " " + name + " " + limits);
        lines.emplace_back(" ");
    }

    if (d.reference_model_given && !is_numeric(d.reference_model_file) &&
        file_name_only(d.reference_model_file) != initial) {
        const std::string name = file_name_only(d.reference_model_file);
        lines.insert(lines.end(), {" ", "rem extract reference model", " "});
        if (rock) {
            const bool mag_name = method == method_ubc_mag_v4 || method == method_zarninv3d || method == method_ubc_mag_v5;
            lines.push_back(tool + " ..\\mesh ..\\" + name + " " + (mag_name ? "mag3d_ref.sus" : "grav3d_ref.den") + " " +
                            limits + " -Ref ..\\" + file_name_only(d.rock_property_file));
        } else {
            lines.push_back(tool + " ..\\mesh ..\\" + name + " " + name + " " + limits);
        }
        lines.emplace_back(" ");
    }

    const bool bounds_method = method == method_ubc_grav_v3 || method == method_ubc_mag_v4 ||
                               method == method_zarninv3d || method == method_ubc_grav_v5 ||
                               method == method_ubc_mag_v5;
    if (bounds_method && d.model_bounds_given) {
        const std::string name = file_name_only(d.model_bounds_files[0]);
        lines.insert(lines.end(), {" ", "rem extract bounds file", " "});
        if (rock) {
            const bool mag_name = method == method_ubc_mag_v4 || method == method_zarninv3d || method == method_ubc_mag_v5;
            lines.push_back(tool + " ..\\mesh ..\\" + name + " " + (mag_name ? "mag3d_bounds.sus" : "grav3d_bounds.den") +
                            " " + limits + " -Bounds ..\\" + file_name_only(d.rock_property_file));
        } else {
            lines.push_back(tool + " ..\\mesh ..\\" + name + " " + name + " " + limits + " -Bounds");
        }
        lines.emplace_back(" ");
    }

    // Only the coarse forward model writes a section; a refined forward model has none in a tile.
    if (d.tile_coarse_model == 1) add_forward_model(session, context, i, j, limits, lines);

    add_sensitivity(d, context, i, j, lines);

    const std::string stem = inversion_input_stem(method);
    if (magnetic_family(d))
        lines.emplace_back("@if exist maginv3d.kap goto RestartInversion:");
    else if (in_house(d))
        lines.emplace_back(uses_magnetic_names(d) ? "@if exist zarninv3d.kap goto RestartInversion:"
                                                  : "@if exist zarninv3d.rho goto RestartInversion:");
    else
        lines.emplace_back("@if exist gzinv3d.rho goto RestartInversion:");
    lines.push_back(stem + " " + stem + ".inp");
    lines.emplace_back("goto :FinishInversion");
    lines.insert(lines.end(), {" ", ":RestartInversion", " "});
    lines.push_back(stem + " " + stem + ".restart");
    lines.insert(lines.end(), {" ", ":FinishInversion", " "});
    if (magnetic_family(d))
        lines.emplace_back("vorlerror mag.obs maginv3d.pre error.dat mesh");
    else if (gravity_family(d))
        lines.emplace_back("vorlerror grav.obs gzinv3d.pre error.dat mesh");
    else
        lines.emplace_back(uses_magnetic_names(d) ? "Zarnerror mag.obs zarninv3d.pre error.dat mesh"
                                                  : "Zarnerror grav.obs zarninv3d.pre error.dat mesh");
    lines.push_back(tile_insert_line(d, tiles, i, j, d.mesh_cell_count[2] + d.tile_z_blend));
    lines.insert(lines.end(), {" ", " ", "cd .."});
    return lines;
}

std::vector<std::string> tile_inversion_input_lines(const InversionDefinition& d, const RunContext& context,
                                                    int restart_flag) {
    const int method = d.inversion_method;
    if (method == method_ubc_grav_v2) {
        std::vector<std::string> lines = gzinv3d_v2_lines(d, restart_flag);
        lines.at(12) = file_name_only(d.model_bounds_files[0]);
        return lines;
    }
    const bool house = in_house(d);
    const bool magnetic_names = uses_magnetic_names(d);
    const bool rock = extract_with_rock_properties(d);
    std::vector<std::string> lines;
    lines.push_back(whole(restart_flag) + (house ? " " + whole(d.data_type_count) : std::string()));
    if (house)
        lines.push_back("2 " + whole(d.background_method) + " " + format_picture(d.background_value, "0.0000"));
    else
        lines.push_back(whole(d.inversion_mode + 1));
    lines.push_back(house ? zarninv3d_tolerance_line(d)
                          : number_to_text(d.trade_off_parameter) + " " + number_to_text(d.misfit_tolerance));
    lines.emplace_back(magnetic_names ? "mag.obs" : "grav.obs");
    if (house)
        lines.push_back(zarninv3d_matrix_line(d, context.path_prefix()));
    else
        lines.emplace_back(magnetic_family(d) ? "maginv3d.mtx" : "gzinv3d.mtx");

    if (house && d.tile_use_reference != 0)
        lines.emplace_back(magnetic_names ? "zarninv3d_tile.sus" : "zarninv3d_tile.den");
    else
        lines.push_back(trim(d.initial_model_file).empty() ? std::string("null") : file_name_only(d.initial_model_file));

    if (d.tile_use_reference != 0) {
        if (magnetic_family(d))
            lines.emplace_back("maginv3d.mod");
        else if (gravity_family(d))
            lines.emplace_back("gzinv3d.mod");
        else
            lines.emplace_back(magnetic_names ? "zarninv3d_tile.sus" : "zarninv3d_tile.den");
    } else if (!d.reference_model_given) {
        lines.emplace_back("null");
    } else if (rock) {
        if (method == method_ubc_mag_v4 || method == method_ubc_mag_v5)
            lines.emplace_back("mag3d_ref.sus");
        else if (house)
            lines.emplace_back(magnetic_names ? "zarn3d_ref.sus" : "zarn3d_ref.den");
        else
            lines.emplace_back("grav3d_ref.den");
    } else {
        lines.push_back(file_name_only(d.reference_model_file));
    }

    if (method == method_ubc_grav_v3 || method == method_ubc_mag_v4 || house) {
        if (!d.model_bounds_given)
            lines.emplace_back("null");
        else if (rock)
            lines.emplace_back(method == method_ubc_mag_v4 ? "mag3d_bounds.sus"
                               : house                     ? (magnetic_names ? "mag3d_bounds.sus" : "mag3d_bounds.den")
                                                           : "grav3d_bounds.den");
        else
            lines.push_back(file_name_only(d.model_bounds_files[0]));
    } else {
        if (!d.model_bounds_given) {
            lines.insert(lines.end(), {"VALUE -2.0", "VALUE  2.0"});
        } else if (rock) {
            if (method == method_ubc_mag_v5)
                lines.insert(lines.end(), {"mag3d_lower_bounds.sus", "mag3d_upper_bounds.sus"});
            else
                lines.insert(lines.end(), {"grav3d_lower_bounds.den", "grav3d_uppwe_bounds.den"});
        } else {
            lines.push_back(file_name_only(d.model_bounds_files[0]));
            lines.push_back(file_name_only(d.model_bounds_files[1]));
        }
    }
    lines.push_back(alphas_line(d));
    lines.push_back(use_weighting_model(d) ? std::string("w.dat") : d.weighting_model_file);
    if (house && d.tile_coarse_model == 1)
        lines.emplace_back(magnetic_names ? "mag_null.obs" : "grav_null.obs");
    else
        lines.emplace_back("0");
    if (house && d.maximum_iterations > 0) lines.push_back(whole(d.maximum_iterations));
    return lines;
}

void write_tile_run_files(Session& session, const RunContext& context, int i, int j) {
    const InversionDefinition& d = session.definition;
    const std::string name = tile_name(i, j);
    append_progress(session, "Creating inversion input and batch files for " + name);
    const std::filesystem::path directory = context.run_directory / name;
    if (!std::filesystem::is_directory(directory)) make_directory_path(directory.string());
    if (in_house(d)) {
        std::error_code ignored;
        std::filesystem::remove(directory / (uses_magnetic_names(d) ? "zarninv3d.kap" : "zarninv3d.rho"), ignored);
    }
    write_batch_file(context.run_directory / (name + ".bat"), tile_batch_lines(session, context, i, j));
    for (const std::string& file : sensitivity_copies(d.inversion_method))
        copy_replacing(context.run_directory / file, directory / file);
    if (i == 1 && j == 1) {
        for (int restart_flag = 0; restart_flag <= 1; ++restart_flag)
            write_text_lines(directory / inversion_input_file_name(d.inversion_method, restart_flag),
                             tile_inversion_input_lines(d, context, restart_flag));
    } else {
        for (int restart_flag = 0; restart_flag <= 1; ++restart_flag) {
            const std::string file = inversion_input_file_name(d.inversion_method, restart_flag);
            copy_replacing(context.run_directory / tile_name(1, 1) / file, directory / file);
        }
    }
}

}  // namespace invsetup
