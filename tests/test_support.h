// tests/test_support.h - what the test programs share: a temporary directory per test, file helpers,
// a small survey to create runs from, and the bundled examples.
#pragma once
#include <array>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "form/inversion_definition.h"
#include "mesh/inversion_mesh.h"
#include "modelfiles/mesh_file_read.h"

namespace invsetup {
struct Session;
class HeadlessDialogue;
}  // namespace invsetup

namespace invsetup::testing {

/// A fresh directory under the system's temporary directory, removed with the object.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// The whole file as bytes.
std::string read_file_bytes(const std::filesystem::path& path);
/// Writes the bytes as they are (no line-end translation).
void write_file_bytes(const std::filesystem::path& path, const std::string& bytes);
/// A fixture below tests/data.
std::filesystem::path test_data(const std::string& relative);
/// The lines of a text file, without their ends.
std::vector<std::string> lines_of(const std::filesystem::path& path);
/// The lines as the text of a file, each ended by CR LF.
std::string file_text(const std::vector<std::string>& lines);
/// What a shell command writes on its output.
std::string output_of(const std::string& command);

/// The files and folders directly inside `folder`, by name.
std::set<std::string> listing(const std::filesystem::path& folder);
/// Every file below `folder` (a run package) by its relative path, with its bytes.
std::map<std::string, std::string> package(const std::filesystem::path& folder);

/// The folder of a bundled example (examples/<name>).
std::filesystem::path example_folder(const std::string& name);
/// A copy of a bundled example in `to`, so that what a run saves beside its definition stays there.
void copy_example(const std::string& name, const std::filesystem::path& to);

/// A small magnetic point survey (UBC MAG3D V5) on a mesh without padding from `low` to `high` (X, Y,
/// Z) in cells of `cell`: readings in obs.csv (x, y, z, value in columns 1 to 4) and topography
/// points in topo.csv (x, y, z), each under a name line; the readings' z is the sensor's elevation,
/// the topography is taken as it is (not shifted to a node); errors 2 % plus 1; field 70 / -10.5 /
/// 50000.
inline InversionFields small_survey(const std::array<double, 3>& low, const std::array<double, 3>& high,
                                    const std::array<double, 3>& cell) {
    InversionFields d;
    d.inversion_method = method_ubc_mag_v5;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        d.mesh_min[axis] = low[axis];
        d.mesh_max[axis] = high[axis];
        d.mesh_cell_size[axis] = cell[axis];
        d.mesh_cell_count[axis] = static_cast<int>((high[axis] - low[axis]) / cell[axis] + 0.5);
    }
    d.mesh_cell_size[3] = 1;
    d.add_mesh_padding = 0;
    d.data_file_names[0] = "obs.csv";
    d.data_file_names[1] = "topo.csv";
    d.data_first_lines = {2, 2};
    d.data_name_lines = {1, 1};
    d.data_read_steps = {1, 1};
    d.data_x_columns = {1, 1};
    d.data_y_columns = {2, 2};
    d.data_z_columns = {3, 3};
    d.data_value_columns = {4, 0, 0};
    d.regional_scale = 1;
    d.sensor_height_type = 1;
    d.topo_type = 0;
    d.topo_shift_option = 0;
    d.error_percent = 2;
    d.error_floor = 1;
    d.mag_inclination = 70;
    d.mag_declination = -10.5f;
    d.mag_intensity = 50000;
    d.background_topo = -1e32f;
    return d;
}

/// The files of small_survey({1000, 2000, 0}, {1100, 2100, 100}, {50, 50, 50}) in `folder`: five
/// readings with a line name in column 5 (L10, L20), one in the middle of each of the four columns and
/// a fifth farther from the middle of column (1, 1), and a flat topography at 50 m on points 20 m and
/// 40 m apart that reach 10 m past the mesh.
void write_small_survey_files(const std::filesystem::path& folder);

/// A mesh of uniform cells: `counts` cells of `widths` along X, Y and Z from the first node at `origin`
/// (X, Y and the top), its nodes and centres laid.
InversionMesh uniform_mesh(const std::array<int, 3>& counts, const std::array<double, 3>& widths,
                           const std::array<double, 3>& origin = {0, 0, 0});

/// The elements of a 1-based array in order, to compare the whole array at once.
template <class T>
std::vector<T> elements(const Array1<T>& array) {
    return {array.data(), array.data() + array.size()};
}

/// A coarse loaded mesh: 10 cells of 100 m in X and Y from 0, 10 cells of 50 m down from 0, no padding.
LoadedMesh coarse_mesh();

/// Saves `definition` as `file` and reads it into the session as the File menu does, the file's
/// folder the working directory. Returns the read's status.
int load_definition(Session& session, HeadlessDialogue& dialogue, const InversionFields& definition,
                    const std::filesystem::path& file);
/// Names `run` as the run directory of the Create tab (its drive, folder and name).
void set_run_directory(Session& session, const std::filesystem::path& run);
/// The last message of the dialogue and the progress box, for a failure's report.
std::string last_words(const Session& session, const HeadlessDialogue& dialogue);

/// A path in double quotes, for a shell command line.
std::string quoted(const std::filesystem::path& path);

/// What a run of the invsetup command line gave back.
struct CliRun {
    int exit_code = -1;
    std::string out;
    std::string err;
};
/// Runs the invsetup command line with `arguments` (already quoted where needed) and collects its
/// exit status, standard output and standard error.
CliRun run_cli(const std::string& arguments);

}  // namespace invsetup::testing
