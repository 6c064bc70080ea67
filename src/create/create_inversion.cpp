// src/create/create_inversion.cpp - the create driver: the stages of a run package in their fixed order.
#include "create/create_inversion.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "create/batch_files.h"
#include "create/inversion_input.h"
#include "create/merge_scripts.h"
#include "create/run_context.h"
#include "create/run_names.h"
#include "create/sensitivity_input.h"
#include "create/tile_files.h"
#include "create/weighting_file.h"
#include "data/location_file.h"
#include "data/observation_file.h"
#include "data/observed_data.h"
#include "data/topo_file.h"
#include "data/topography.h"
#include "modelfiles/mesh_file_write.h"
#include "modelfiles/model_file_write.h"
#include "modelfiles/model_interpolation.h"
#include "session.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

std::string model_file_name(const InversionDefinition& definition, bool refined_name) {
    return std::string(refined_name ? "refined" : "model") + (uses_magnetic_names(definition) ? ".sus" : ".den");
}

void append_progress(Session& session, std::string_view text) {
    std::string all = session.form.text("Text_progress");
    all.append(text);
    all.append("\r\n");
    session.form.set_text("Text_progress", std::move(all));
}

namespace {

/// A stage that failed after telling the person (or with nothing more to say): the failure path
/// shows the fixed text with an empty description.
struct StageFailure : std::runtime_error {
    StageFailure() : std::runtime_error("") {}
};

void check_status(int status) {
    if (status < 0) throw StageFailure();
}

/// Copies a file over any older one of the target's name.
void copy_replacing(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code fault;
    // A source that already lies in the run directory stays as it is.
    if (std::filesystem::exists(to) && std::filesystem::equivalent(from, to, fault)) return;
    std::filesystem::remove(to, fault);
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, fault);
    if (fault) throw std::runtime_error("cannot copy " + from.string() + " to " + to.string() + ": " + fault.message());
}

class Driver {
public:
    Driver(Session& session, const std::filesystem::path& run_directory, int create_mode)
        : session_(session), definition_(session.definition) {
        context_.run_directory = run_directory;
        context_.create_mode = create_mode;
        context_.transform_in_use = definition_.coordinate_transform.active;
        context_.transform_rotation = definition_.coordinate_transform.angle;
    }

    void run() {
        prepare();
        write_input_files();
        if (context_.create_mode == 1 || context_.create_mode == 2) return;
        // The survey is read on a second core while this one grids the topography and writes the
        // mesh and model; the reader's messages wait for their turn.
        read_observed_data_ahead(session_);
        if (definition_.topo_type == 0)
            grid_topography();
        else
            flat_surface();
        const TopoRange range = topography_range();
        if (context_.create_mode != 3) {
            write_mesh(range);
            write_model(range);
        }
        session_.bins.size_bins(mesh().nx, mesh().ny);
        read_observed_data();
        write_observations();
        if (context_.create_mode == 3) return;
        write_reference_data();
        if (refined()) check_status(write_merge_scripts(session_, context_.run_directory));
        write_topography();
    }

private:
    struct TopoRange {
        float high = 0, low = 0;
    };

    InversionMesh& mesh() { return session_.mesh; }
    bool refined() const { return definition_.refinement_mode == 1; }
    bool expanded() const { return definition_.use_expanded_mesh != 0; }
    /// The tiles in the order of the run's stages: x outside, y inside.
    template <class Work>
    void for_each_tile(Work work) {
        for (int i = 1; i <= definition_.number_of_x_tiles; ++i)
            for (int j = 1; j <= definition_.number_of_y_tiles; ++j) work(i, j);
    }
    /// The node after the last z cell of a tile.
    int tile_z_end() const { return tile_z_cells(definition_, session_.mesh.nz) + 1; }
    std::filesystem::path in_run(const std::string& name) const { return context_.run_directory / name; }
    void label(std::string_view text) { session_.form.set_caption("Label_progress", std::string(text)); }
    void append(std::string_view text) { append_progress(session_, text); }
    void yield() { session_.dialogue.do_events(); }

    void prepare() {
        if (definition_.topo_type == 0 && definition_.inversion_method == method_zarninv3d) {
            mesh_format_ = 5;
            write_extended_ = true;
            mesh_has_topo_ = true;
        }
        session_.form.set_visible("ProgressBar_load_ubc_model", false);
        session_.form.set_visible("Frame_progress", true);
        session_.form.set_visible("Label_progress", true);
        append("Creating inversion parameter files");
    }

    void write_input_files() {
        if (context_.create_mode < 2) {
            label("Write sensitivity input file");
            yield();
            write_weighting_input(session_, context_);
            write_sensitivity_input(session_, context_);
        }
        label("Write inversion input file");
        yield();
        write_inversion_input(session_, context_, 0);
        if (refined()) write_inversion_input(session_, context_, 1);

        if (refined()) {
            label("Write inversion run files");
            yield();
            for_each_tile([&](int i, int j) { write_tile_run_files(session_, context_, i, j); });
            return;
        }
        append("Creating inversion batch file");
        label("Write inversion run file");
        yield();
        write_run_files(session_, context_);
        if (use_weighting_model(definition_))
            check_status(write_weighting_model(session_, 2, definition_.weight_multipliers, in_run("w.dat"), mesh().nx,
                                               mesh().ny, mesh().nz));
    }

    void grid_topography() {
        append("Gridding topo data ");
        yield();
        label("Generate topo data");
        check_status(invsetup::grid_topography(session_));
    }

    /// Without topography the surface is the top of the mesh, so the later stages read it as any other.
    void flat_surface() {
        Topography& topography = session_.topography;
        topography.size_surface(mesh().nx, mesh().ny);
        const float top = static_cast<float>(mesh().z_nodes[1]);
        for (int j = 1; j <= mesh().ny + 1; ++j)
            for (int i = 1; i <= mesh().nx + 1; ++i) {
                topography.topo_nodes(i, j) = top;
                if (i <= mesh().nx && j <= mesh().ny) topography.topo_grid(i, j) = top;
            }
    }

    /// The drape levels of the in-house mesh file: the lowest point of the surface, and that less the
    /// mesh's thickness. The names follow the mesh file's fields, not what they hold.
    TopoRange topography_range() {
        TopoRange range;
        if (definition_.inversion_method != method_zarninv3d) return range;
        if (refined()) {
            // A refinement keeps the drape of the mesh it refines.
            range.high = session_.loaded_mesh.drape_top;
            range.low = session_.loaded_mesh.drape_bottom;
            return range;
        }
        const Topography& topography = session_.topography;
        range.high = range.low = topography.topo_nodes(1, 1);
        for (int j = 1; j <= mesh().ny + 1; ++j)
            for (int i = 1; i <= mesh().nx + 1; ++i) {
                const float value = topography.topo_nodes(i, j);
                if (value < range.high) range.high = value;
                if (value > range.low) range.low = value;
            }
        for (int j = 1; j <= mesh().ny; ++j)
            for (int i = 1; i <= mesh().nx; ++i) {
                const float value = topography.topo_grid(i, j);
                if (value < range.high) range.high = value;
                if (value > range.low) range.low = value;
            }
        range.low = static_cast<float>(range.high - (mesh().z_nodes[1] - mesh().z_nodes[mesh().nz + 1]));
        return range;
    }

    void write_mesh(const TopoRange& range) {
        append("Creating inversion mesh files");
        label("Write mesh file");
        yield();
        MeshFileRequest request = whole_mesh_request(mesh());
        request.write_extended = write_extended_;
        request.has_topo = mesh_has_topo_;
        request.topo_grid = &session_.topography.topo_nodes;
        request.mesh_format = mesh_format_;
        request.drape_top = range.high;
        request.drape_bottom = range.low;
        write_mesh_file(in_run("mesh"), mesh(), request);
        if (!refined()) return;

        if (expanded()) {
            const float weights[5] = {1, 2, 4, 8, 16};
            for (int k = 1; k <= 5; ++k) session_.expanded_mesh.expansion_weights[k] = weights[k - 1];
        }
        const TileTable& tiles = session_.tiles;
        for_each_tile([&](int i, int j) {
            if (expanded()) set_expanded_mesh_limits(session_, i, j);
            MeshFileRequest tile = request;
            tile.first_x = tiles.tile_x_limits(i, tile_outer_start);
            tile.last_x = tiles.tile_x_limits(i, tile_outer_end);
            tile.first_y = tiles.tile_y_limits(j, tile_outer_start);
            tile.last_y = tiles.tile_y_limits(j, tile_outer_end);
            tile.first_z = 1;
            tile.last_z = tile_z_end();
            write_mesh_file(context_.run_directory / tile_name(i, j) / "mesh", mesh(), tile);
        });
        if (!use_weighting_model(definition_)) return;
        for_each_tile([&](int i, int j) {
            check_status(write_weighting_model(
                session_, 2, definition_.weight_multipliers, context_.run_directory / tile_name(i, j) / "w.dat",
                tiles.tile_x_limits(i, tile_outer_end) - tiles.tile_x_limits(i, tile_outer_start),
                tiles.tile_y_limits(j, tile_outer_end) - tiles.tile_y_limits(j, tile_outer_start), tile_z_end() - 1));
        });
    }

    void write_model(const TopoRange& range) {
        if (refined()) {
            append("Interpolating current inversion model");
            label("Interpolate current model file");
            yield();
        }
        // A plain run starts from an empty model; a refinement from the loaded model moved onto the mesh.
        ModelValues model;
        if (refined() && session_.loaded_model.loaded) {
            InterpolationTarget target;
            target.mesh = &mesh();
            if (mesh_format_ == 5) target.surface_nodes = &session_.topography.topo_nodes;
            target.mesh_format = mesh_format_;
            target.drape_range = range.high - range.low;
            target.drape_bottom = range.low;
            target.surface_cells = &session_.topography.topo_grid;
            session_.form.set_visible("ProgressBar_load_ubc_model", true);
            interpolate_model_to_mesh(session_.dialogue, 1, 1, session_.loaded_mesh, session_.loaded_model, target,
                                      model);
        } else {
            model.size(mesh().nx, mesh().ny, mesh().nz, 0.0f);
        }

        append("Writing inversion model file");
        label("Write model file");
        yield();
        const std::string model_name = model_file_name(definition_, refined());
        const std::filesystem::path file = in_run(model_name);
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
        // The scale is a model's and defaults to 0.
        ModelWriteRequest request = whole_model_request(model);
        if (!(request.scale > 0)) request.scale = 1;
        session_.form.set_visible("ProgressBar_load_ubc_model", true);
        write_model_file(session_.dialogue, file, model, request);
        if (refined()) write_tile_models(model, request, model_name);
    }

    /// The model copies of a refinement: the name the merge works on, the source models the tiles
    /// extract from, and each tile's part of the new model.
    void write_tile_models(const ModelValues& model, const ModelWriteRequest& whole, const std::string& model_name) {
        const int method = definition_.inversion_method;
        const bool magnetic = uses_magnetic_names(definition_);
        std::string merged;
        if (method == method_zarninv3d)
            merged = magnetic ? "zarninv3d.sus" : "zarninv3d.den";
        else
            merged = is_magnetic_method(method) ? "maginv3d.sus" : "gzinv3d.den";
        copy_replacing(in_run(model_name), in_run(merged));

        if (!context_.run_directory.empty()) {
            const auto copy_source = [&](const std::string& text) {
                const std::string name = trim(text);
                const std::filesystem::path from = resolve_path(session_.working_directory, name);
                copy_replacing(from, in_run(file_name_only(name)));
            };
            const std::string initial = trim(definition_.initial_model_file);
            if (!initial.empty() && !iequals(initial, "NULL") && !is_numeric(initial)) copy_source(initial);
            if (definition_.reference_model_given && !is_numeric(definition_.reference_model_file))
                copy_source(definition_.reference_model_file);
            const bool bounds_given = definition_.model_bounds_given;
            if (method == method_ubc_grav_v3 || method == method_ubc_mag_v4) {
                if (bounds_given && !is_numeric(definition_.model_bounds_files[0]))
                    copy_source(definition_.model_bounds_files[0]);
            }
            if (method == method_ubc_grav_v5 || method == method_ubc_mag_v5) {
                for (const std::string& bounds : definition_.model_bounds_files)
                    if (bounds_given && !is_numeric(bounds)) copy_source(bounds);
            }
            if ((method == method_ubc_grav_v3 || method == method_ubc_mag_v4 || method == method_ubc_grav_v5 ||
                 method == method_ubc_mag_v5) &&
                definition_.rock_properties_used)
                copy_source(definition_.rock_property_file);
        }

        std::string tile_model;
        if (is_magnetic_method(method))
            tile_model = "maginv3d.sus";
        else if (method == method_zarninv3d)
            tile_model = magnetic ? "mag_tile.sus" : "grav_tile.den";
        else
            tile_model = "gzinv3d.den";
        const TileTable& tiles = session_.tiles;
        for_each_tile([&](int i, int j) {
            if (expanded()) set_expanded_mesh_limits(session_, i, j);
            append("Writing model file for " + tile_name(i, j));
            ModelWriteRequest request = whole;
            request.first_x = tiles.tile_x_limits(i, tile_outer_start);
            request.end_x = tiles.tile_x_limits(i, tile_outer_end);
            request.first_y = tiles.tile_y_limits(j, tile_outer_start);
            request.end_y = tiles.tile_y_limits(j, tile_outer_end);
            request.first_z = 1;
            request.end_z = tile_z_end();
            request.expanded = expanded() ? 1 : 0;
            write_model_file(session_.dialogue, context_.run_directory / tile_name(i, j) / tile_model, model, request);
        });
    }

    void read_observed_data() {
        append("Reading inversion data file");
        label("Read observed data file");
        yield();
        check_status(process_inversion_data(session_));
        session_.readings_kept = session_.bins.bin_total;
        const bool reader_count = definition_.obs_data_file_type == 0 && definition_.values_per_cell != 1;
        const int count = reader_count ? session_.readings.read_count : session_.bins.bin_total;
        append("Number of data read from file: " + format_picture(count, "0"));
        label("Read observed data file");
        yield();
        if (definition_.topo_type == 0) {
            append("Ensuring reading elevations are consistent with topo");
            label("Process topo data");
            yield();
            check_status(process_inversion_topo(session_));
        }
    }

    void write_observations() {
        append("Writing observed data for use in the inversion");
        label("Write observed data");
        yield();
        const std::string name = uses_magnetic_names(definition_) ? "mag.obs" : "grav.obs";
        check_status(write_inversion_data(session_, 0, in_run(name), 1, mesh().nx + 1, 1, mesh().ny + 1, 0,
                                          data_written_));
    }

    void write_reference_data() {
        if (definition_.line_column <= 0 && definition_.extra_value_column <= 0) return;
        const bool magnetic = uses_magnetic_names(definition_);
        std::string name = magnetic ? "mag.ref" : "grav.ref";
        // The in-house method reads the densified set as its data: it replaces the file just written.
        if (definition_.inversion_method == method_zarninv3d && definition_.integration_interval > 0)
            name = magnetic ? "mag.obs" : "grav.obs";
        check_status(write_inversion_data(session_, 1, in_run(name), 1, mesh().nx + 1, 1, mesh().ny + 1, 0,
                                          data_written_));
    }

    void write_topography() {
        session_.form.set_visible("ProgressBar_load_ubc_model", false);
        if (definition_.topo_type != 0) return;
        append("Writing topo data for use in the inversion");
        label("Write topo data file");
        yield();
        check_status(write_topo_file(session_, in_run("topo.dat"), 1, mesh().nx + 1, 1, mesh().ny + 1));
        if (!refined()) return;
        const TileTable& tiles = session_.tiles;
        for_each_tile([&](int i, int j) {
            if (expanded()) set_expanded_mesh_limits(session_, i, j);
            append("Processing tile " + format_picture(i, "00") + format_picture(j, "00"));
            check_status(write_topo_file(session_, context_.run_directory / tile_name(i, j) / "topo.dat",
                                         tiles.tile_x_limits(i, tile_outer_start), tiles.tile_x_limits(i, tile_outer_end),
                                         tiles.tile_y_limits(j, tile_outer_start), tiles.tile_y_limits(j, tile_outer_end)));
        });
    }

    Session& session_;
    const InversionDefinition& definition_;
    RunContext context_;
    int mesh_format_ = 0;
    bool write_extended_ = false;
    bool mesh_has_topo_ = false;
    int data_written_ = 0;
};


/// The files under a run directory with their times of writing, by their names within it.
using FileTimes = std::map<std::string, std::filesystem::file_time_type>;

FileTimes files_in(const std::filesystem::path& directory) {
    FileTimes files;
    std::error_code fault;
    std::filesystem::recursive_directory_iterator walk(directory, fault), end;
    for (; !fault && walk != end; walk.increment(fault)) {
        if (!walk->is_regular_file(fault)) continue;
        files[walk->path().lexically_relative(directory).generic_string()] = walk->last_write_time(fault);
    }
    return files;
}

/// Files of an earlier run that this run left as they were: neither written now nor named by the
/// definition as one of its inputs (a data file kept in the run directory), nor a definition file.
std::vector<std::string> files_not_written(const FileTimes& before, const std::filesystem::path& directory,
                                           const InversionDefinition& definition) {
    const FileTimes after = files_in(directory);
    std::vector<std::string> left;
    for (const auto& [name, time] : before) {
        const auto now = after.find(name);
        if (now == after.end() || now->second != time) continue;
        const std::filesystem::path path = directory / name;
        if (iequals(path.extension().string(), ".inp")) continue;
        std::error_code fault;
        const bool input = std::any_of(definition.data_file_names.begin(), definition.data_file_names.end(),
                                       [&](const std::string& input_name) {
                                           return !trim(input_name).empty() &&
                                                  std::filesystem::equivalent(path, native_path(trim(input_name)), fault);
                                       });
        if (!input) left.push_back(name);
    }
    return left;
}

std::string left_files_warning(const std::filesystem::path& directory, const std::vector<std::string>& names) {
    std::string list;
    const std::size_t shown = std::min<std::size_t>(names.size(), 10);
    for (std::size_t i = 0; i < shown; ++i) list += (i > 0 ? ", " : "") + names[i];
    if (names.size() > shown) list += " and " + format_picture(static_cast<int>(names.size() - shown), "0") + " more";
    return "The run folder " + directory.string() + " also holds " +
           (names.size() == 1 ? "a file" : format_picture(static_cast<int>(names.size()), "0") + " files") +
           " that this run did not write: " + list +
           ". They were left as they were; the inversion may read them as if they were part of this run.";
}

/// What one creation sized is given back when it ends.
void release_creation(Session& session) {
    session.bins.size_bins(1, 1);
    session.readings = ObservationList{};
    session.topography.clear();
    session.mesh = InversionMesh{};
}

}  // namespace

WholeDataFileNames::WholeDataFileNames(Session& session)
    : names_(session.definition.data_file_names), kept_(names_) {
    for (std::string& name : names_) {
        if (!trim(name).empty()) name = resolve_path(session.working_directory, trim(name)).string();
    }
}

WholeDataFileNames::~WholeDataFileNames() { names_ = kept_; }

int create_inversion(Session& session, const std::filesystem::path& run_directory, int create_mode) {
    try {
        // Update and variation runs expect the files of the earlier run beside them.
        const bool new_run = create_mode == 0;
        const FileTimes earlier = new_run ? files_in(run_directory) : FileTimes{};
        std::vector<std::string> left;
        {
            WholeDataFileNames whole_names(session);
            Driver(session, run_directory, create_mode).run();
            if (new_run) left = files_not_written(earlier, run_directory, session.definition);
        }
        append_progress(session, inversion_complete_text);
        session.dialogue.message_box(std::string(output_complete_text));
        if (!left.empty()) session.dialogue.message_box(left_files_warning(run_directory, left));
        release_creation(session);
        session.form.set_visible("Frame_progress", false);
        return 0;
    } catch (const std::exception& fault) {
        session.form.set_visible("Frame_progress", false);
        session.form.set_visible("ProgressBar_load_ubc_model", false);
        // A stage that stopped has told why; the trap still ends with the stage it stopped in.
        std::string reason = trim(fault.what());
        if (reason.empty()) {
            const std::string stage = trim(session.form.control("Label_progress").caption);
            reason = stage.empty() ? "the creation stopped before its first stage"
                                   : "the creation stopped at the stage \"" + stage + "\"";
        }
        session.dialogue.message_box(std::string(create_failure_text) + reason);
        return -1;
    }
}

}  // namespace invsetup
