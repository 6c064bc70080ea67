// src/modelfiles/mesh_file_read.cpp - reading the mesh of refinement mode.
//
// Faults in a file are of one kind here: the first bad count, width or line stops the read with a
// message naming what was wrong, and the mesh stays unloaded. A file that ends early is no fault by
// itself: what was read is kept, and widths left at 0 are then reported by the geometry.
#include "modelfiles/mesh_file_read.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <vector>

#include "session.h"
#include "support/files.h"
#include "support/memory.h"
#include "support/lines.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

void clear_mesh(LoadedMesh& mesh) {
    const float surface_level = mesh.surface_level;
    const int surface_varies = mesh.surface_varies;
    mesh = LoadedMesh{};
    mesh.surface_level = surface_level;
    mesh.surface_varies = surface_varies;
}

namespace {

constexpr int two_axis_table_size = 64384;
constexpr double degrees_per_radian = 57.29577951;
constexpr double radians_per_degree = 0.017453292;

/// Cell widths of a two-axis mesh, before they move into the mesh.
struct TwoAxisTables {
    std::vector<float> x_widths, z_widths;
};

/// Tokens across lines: the next blank-separated word, reading lines as needed. Commas separate too.
class TokenStream {
public:
    explicit TokenStream(std::istream& in) : in_(in) {}
    /// False at the end of the input.
    bool next(std::string_view& token) {
        for (;;) {
            token = next_word(rest_);
            if (!token.empty()) return true;
            if (!read_raw_line(in_, line_)) return false;
            std::replace(line_.begin(), line_.end(), ',', ' ');
            rest_ = line_;
        }
    }
    /// The next word of the current line only ("" when it has none).
    std::string_view next_on_line() { return next_word(rest_); }
    /// Forgets what is left of the current line.
    void drop_line() { rest_ = {}; }

private:
    std::istream& in_;
    std::string line_;
    std::string_view rest_;
};

bool starts_with(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }
bool contains(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

/// A count of cells as the file gives it; 0 (refused as invalid) when no count of cells can be that.
int cell_count(double value) { return value >= 0 && value <= 2147483647.0 ? to_integer(value) : 0; }

/// Bytes from the read position to the end of the stream; -1 when the stream can't say.
double bytes_left(std::istream& in) {
    const std::streampos here = in.tellg();
    if (here < 0) return -1;
    in.seekg(0, std::ios::end);
    const std::streampos end = in.tellg();
    in.clear();
    in.seekg(here);
    return end < here ? -1 : static_cast<double>(end - here);
}

/// The most values `bytes` of text can hold: a digit and a separator each, the last without one.
double values_held(double bytes) { return std::floor((bytes + 1) / 2); }

/// True when the rest of the stream holds a "*": a repeat gives many widths in one word.
bool has_repeats(std::istream& in) {
    const std::streampos here = in.tellg();
    bool found = false;
    char buffer[65536];
    while (!found && in.read(buffer, sizeof buffer).gcount() > 0)
        found = std::string_view(buffer, static_cast<std::size_t>(in.gcount())).find('*') != std::string_view::npos;
    in.clear();
    in.seekg(here);
    return found;
}

std::string counts_text(const LoadedMesh& mesh) {
    return count_text(mesh.nx) + " x " + count_text(mesh.ny) + " x " + count_text(mesh.nz);
}

/// The claim of a file's counts against what the file can hold and the memory the tables take, before
/// any table is made: "" when they fit, else the refusal. `values` is the number of values (widths,
/// node coordinates) the counts ask of the file; `repeats` tells that a word may stand for many widths.
std::string mesh_file_refusal(std::string_view file_name, const LoadedMesh& mesh, double values, double bytes,
                              bool repeats) {
    const double cells = static_cast<double>(mesh.nx) * mesh.ny * mesh.nz;
    const std::string memory = mesh_memory_refusal("mesh file " + std::string(file_name), cells, available_memory_bytes());
    if (!memory.empty()) return memory;
    if (bytes >= 0 && !repeats && values > values_held(bytes))
        return "The mesh file " + std::string(file_name) + " claims " + counts_text(mesh) + " cells, which take " +
               count_text(values) + " values, but its " + count_text(bytes) + " bytes can hold at most " +
               count_text(values_held(bytes)) + ": the counts are wrong, or it is not a mesh file.";
    // The axis tables (widths, nodes and centres, double reals) come beside the models.
    const double axis_bytes = 3.0 * sizeof(double) * (static_cast<double>(mesh.nx) + mesh.ny + mesh.nz);
    const double available = available_memory_bytes();
    if (available > 0 && axis_bytes + 4 * cells * sizeof(float) > available)
        return "The mesh file " + std::string(file_name) + " has " + counts_text(mesh) + " cells; its axis tables take " +
               bytes_text(axis_bytes) + " beside " + bytes_text(4 * cells * sizeof(float)) + " for the models; " +
               bytes_text(available) + " is available.";
    return "";
}

void size_widths(LoadedMesh& mesh) {
    mesh.dx.assign(std::max(mesh.nx, 0));
    mesh.dy.assign(std::max(mesh.ny, 0));
    mesh.dz.assign(std::max(mesh.nz, 0));
}

const char* axis_letter(int axis) { return axis == 0 ? "x" : axis == 1 ? "y" : "z"; }

/// Reads the widths of one axis. Returns 0, 1 when the file ended first, or -1 after a message.
int read_axis_widths(Session& session, std::istream& in, LoadedMesh& mesh, int axis, bool node_form) {
    Array1<double>& widths = axis == 0 ? mesh.dx : axis == 1 ? mesh.dy : mesh.dz;
    const int count = widths.size();
    const std::string letter = axis_letter(axis);
    bool origin_pending = node_form;
    double previous = 0;  // the previous node of x and y in node form
    double kept = 0;      // the kept value of z in node form
    int filled = 0;
    std::string line;
    while (filled < count) {
        if (!read_raw_line(in, line)) return 1;
        if (node_form && contains(line, "coordinates")) continue;
        std::replace(line.begin(), line.end(), ',', ' ');
        std::string_view rest = line;
        while (filled < count) {
            std::string_view token = next_word(rest);
            if (token.empty()) break;
            if (origin_pending) {
                const double value = parse_number_prefix(token);
                if (!std::isfinite(value)) {
                    session.dialogue.message_box("The " + letter + " mesh origin is too large : " + std::string(token));
                    return -1;
                }
                if (axis == 0) mesh.x0 = value;
                if (axis == 1) mesh.y0 = value;
                if (axis == 2) mesh.z0 = -value;
                previous = value;
                kept = -value;
                origin_pending = false;
                continue;
            }
            const std::size_t star = token.find('*');
            if (star != std::string_view::npos) {
                const std::string repeat_text = trim(token.substr(0, star));
                std::string_view width_text = token.substr(star + 1);
                if (width_text.empty()) width_text = next_word(rest);
                if (!is_numeric(repeat_text)) {
                    session.dialogue.message_box("The " + letter + " mesh cell multiple is invalid : " + repeat_text);
                    return -1;
                }
                const double width = parse_number_prefix(width_text);
                if (width <= 0) {
                    session.dialogue.message_box("The " + letter + " mesh cell multiple is not positive : " + repeat_text);
                    return -1;
                }
                if (!std::isfinite(width)) {
                    session.dialogue.message_box("The " + letter + " mesh value is too large : " + std::string(width_text));
                    return -1;
                }
                // A count that runs past the axis is cut back silently.
                const double repeat = parse_number_prefix(repeat_text);
                const int cells = repeat >= count - filled ? count - filled : to_integer(repeat);
                for (int k = 0; k < cells; ++k) widths[++filled] = width;
                continue;
            }
            const double value = parse_number_prefix(token);
            if (!std::isfinite(value)) {
                session.dialogue.message_box("The " + letter + " mesh value is too large : " + std::string(token));
                return -1;
            }
            if (!node_form) {
                if (value <= 0) {
                    session.dialogue.message_box("The " + letter + " mesh value is not positive : " + std::string(token));
                    return -1;
                }
                widths[++filled] = value;
            } else if (axis < 2) {
                widths[++filled] = value - previous;
                previous = value;
            } else {
                // z adds the token to the kept value and keeps the token without the sign change.
                widths[++filled] = kept + value;
                kept = value;
            }
        }
    }
    return 0;
}

/// Reads `count` tokens into the topography grid, y rows outer. Returns false when the file ended.
bool read_topography(std::istream& in, LoadedMesh& mesh) {
    TokenStream tokens(in);
    std::string_view token;
    for (int j = 1; j <= mesh.ny + 1; ++j) {
        for (int i = 1; i <= mesh.nx + 1; ++i) {
            if (!tokens.next(token)) return false;
            if (is_numeric(token)) {
                const float value = static_cast<float>(parse_number_prefix(token));
                mesh.topo_grid(i, j) = value;
                mesh.topo_max = std::max(mesh.topo_max, value);
                mesh.topo_min = std::min(mesh.topo_min, value);
            } else {
                mesh.topo_grid(i, j) = null_value_single;
            }
        }
    }
    return true;
}

void build_trapezoid_geometry(LoadedMesh& mesh) {
    MeshTrapezoid& trapezoid = mesh.trapezoid;
    const int columns = mesh.nx + 1;
    const int rows = mesh.ny + 1;
    double bearing_sum = 0;
    for (int j = 1; j <= rows; ++j) {
        double ux = trapezoid.nodes(columns, j)[0] - trapezoid.nodes(1, j)[0];
        double uy = trapezoid.nodes(columns, j)[1] - trapezoid.nodes(1, j)[1];
        const double length = std::hypot(ux, uy);
        if (length > 0) {
            ux /= length;
            uy /= length;
        }
        bearing_sum += std::atan2(uy, ux) * degrees_per_radian;
    }
    trapezoid.rotation = bearing_sum / rows;
    trapezoid.cos_rotation = std::cos(trapezoid.rotation * radians_per_degree);
    trapezoid.sin_rotation = std::sin(trapezoid.rotation * radians_per_degree);
    const std::array<double, 2> origin = trapezoid.nodes(1, 1);
    auto fill = [&](Array2<double>& table, int row, const std::array<double, 2>& node) {
        const double ex = node[0] - origin[0];
        const double ey = node[1] - origin[1];
        table(row, 1) = node[0];
        table(row, 2) = node[1];
        table(row, 3) = ex * trapezoid.cos_rotation + ey * trapezoid.sin_rotation;
        table(row, 4) = -ex * trapezoid.sin_rotation + ey * trapezoid.cos_rotation;
    };
    trapezoid.x_table.assign(columns, 4);
    trapezoid.y_table.assign(rows, 4);
    for (int i = 1; i <= columns; ++i) fill(trapezoid.x_table, i, trapezoid.nodes(i, 1));
    for (int j = 1; j <= rows; ++j) fill(trapezoid.y_table, j, trapezoid.nodes(1, j));
}

/// What a reading stops at: the file (for messages) and the part being read (for a fault's message).
struct ReadPlace {
    std::string file_name;
    const char* field = "first lines";
};

/// The nodes of a block after the widths against the bytes left: 0, or -1 after the refusal.
int check_node_block(Session& session, std::istream& in, const LoadedMesh& mesh, const ReadPlace& place,
                     const char* block, double per_node) {
    const double nodes = (mesh.nx + 1.0) * (mesh.ny + 1.0);
    const double bytes = bytes_left(in);
    if (bytes < 0 || nodes * per_node <= values_held(bytes)) return 0;
    session.dialogue.message_box("The mesh file " + place.file_name + " claims a " + block + " of " +
                                 count_text(mesh.nx + 1.0) + " x " + count_text(mesh.ny + 1.0) + " nodes, but the " +
                                 count_text(bytes) + " bytes after its heading can hold at most " +
                                 count_text(values_held(bytes)) + " values: the counts are wrong, or the file is damaged.");
    return -1;
}

/// The trailer items, each optional, in their order. A line that doesn't match waits for the next.
/// Returns 0, or -1 after a message.
int read_trailer(Session& session, std::istream& in, LoadedMesh& mesh, ReadPlace& place) {
    place.field = "trailer";
    std::string line;
    bool have = read_nonblank_line(in, line);
    auto words_after = [&line](std::size_t prefix) { return line.substr(std::min(prefix, line.size())); };
    if (!have) return 0;
    if (starts_with(line, "Mesh format:")) {
        std::string rest = words_after(12);
        mesh.mesh_format = to_integer(parse_number_prefix(next_word(rest)));
        if (!(have = read_nonblank_line(in, line))) return 0;
    }
    if (starts_with(line, "Mesh topo drape:")) {
        std::string rest = words_after(16);
        mesh.drape_top = static_cast<float>(parse_number_prefix(next_word(rest)));
        mesh.drape_bottom = static_cast<float>(parse_number_prefix(next_word(rest)));
        mesh.drape_range = mesh.drape_top - mesh.drape_bottom;
        if (!(have = read_nonblank_line(in, line))) return 0;
    }
    if (starts_with(line, "Number of air cells:")) {
        std::string rest = words_after(20);
        mesh.air_cells = to_integer(parse_number_prefix(next_word(rest)));
        if (!(have = read_nonblank_line(in, line))) return 0;
    }
    if (starts_with(line, "Number of sea cells:")) {
        std::string rest = words_after(20);
        mesh.sea_cells = to_integer(parse_number_prefix(next_word(rest)));
        if (!(have = read_nonblank_line(in, line))) return 0;
    }
    mesh.earth_cells = mesh.nz - mesh.sea_cells - mesh.air_cells;
    if (starts_with(line, "Topography")) {
        if (mesh.mesh_format == 3 || mesh.mesh_format == 5) mesh.z0 = 0;
        mesh.has_topo = true;
        place.field = "topography block";
        if (check_node_block(session, in, mesh, place, "topography", 1) != 0) return -1;
        mesh.topo_grid.assign(mesh.nx + 1, mesh.ny + 1, 0.0f);
        if (!read_topography(in, mesh)) return 0;
        have = read_nonblank_line(in, line);
        if (!have && mesh.topo_max == mesh.topo_min) {
            // A flat surface is no topography: the mesh top is that level.
            mesh.z0 = mesh.topo_max;
            mesh.topo_max = mesh.topo_min = 0;
            mesh.drape_top = mesh.drape_bottom = mesh.drape_range = 0;
            mesh.has_topo = false;
            mesh.mesh_format = 0;
        }
        if (!have) return 0;
    }
    if (starts_with(line, "Trapezoidal")) {
        mesh.mesh_format = 4;
        mesh.has_trapezoid = 1;
        MeshTrapezoid& trapezoid = mesh.trapezoid;
        trapezoid.rotation = trapezoid.sin_rotation = trapezoid.cos_rotation = 0;
        place.field = "trapezoid nodes";
        if (check_node_block(session, in, mesh, place, "trapezoid node table", 2) != 0) return -1;
        trapezoid.nodes.assign(mesh.nx + 1, mesh.ny + 1, {0.0, 0.0});
        trapezoid.cell_corners.assign(mesh.nx + 1, mesh.ny + 1, {});
        TokenStream tokens(in);
        std::string_view a, b;
        for (int j = 1; j <= mesh.ny + 1; ++j)
            for (int i = 1; i <= mesh.nx + 1; ++i) {
                if (!tokens.next(a) || !tokens.next(b)) {
                    // Without every node the cells have no shape: a cut table is refused, not
                    // taken as a rectangular mesh.
                    const long long read = static_cast<long long>(j - 1) * (mesh.nx + 1) + (i - 1);
                    session.dialogue.message_box("The trapezoid node table of the mesh file ends after " +
                                                 std::to_string(read) + " of its " +
                                                 std::to_string(static_cast<long long>(mesh.nx + 1) * (mesh.ny + 1)) +
                                                 " nodes");
                    return -1;
                }
                trapezoid.nodes(i, j) = {parse_number_prefix(a), parse_number_prefix(b)};
            }
        build_trapezoid_geometry(mesh);
    }
    return 0;
}

int read_ubc_body(Session& session, std::istream& in, LoadedMesh& mesh, const TwoAxisTables* tables, ReadPlace& place) {
    if (mesh.mesh_format != -100) {
        std::string line;
        read_nonblank_line(in, line);
        place.field = "cell counts";
        const bool node_form = contains(line, "number of grid nodes");
        if (node_form) read_nonblank_line(in, line);
        std::replace(line.begin(), line.end(), ',', ' ');
        std::array<int, 3> counts{};
        for (int& count : counts) {
            const std::string word = next_word(line);
            count = word.empty() ? 0 : cell_count(parse_number_prefix(word));
            if (node_form) --count;
        }
        if (counts[0] < 1 || counts[1] < 1 || counts[2] < 1) {
            session.dialogue.message_box("The number of cells in the mesh file is invalid");
            return -1;
        }
        const std::string refusal =
            mesh_memory_refusal("mesh file", static_cast<double>(counts[0]) * counts[1] * counts[2], available_memory_bytes());
        if (!refusal.empty()) {
            session.dialogue.message_box(refusal);
            return -1;
        }
        mesh.nx = counts[0];
        mesh.ny = counts[1];
        mesh.nz = counts[2];
        size_widths(mesh);
        mesh.topo_max = -1e32f;
        mesh.topo_min = 1e32f;
        mesh.drape_range = 0;
        place.field = "cell widths";
        if (!node_form) {
            TokenStream tokens(in);
            std::string_view token;
            for (double* origin : {&mesh.x0, &mesh.y0, &mesh.z0}) {
                *origin = tokens.next(token) ? parse_number_prefix(token) : 0.0;
                if (!std::isfinite(*origin)) {
                    session.dialogue.message_box("The mesh origin is too large : " + std::string(token));
                    return -1;
                }
            }
        }
        bool ended = false;
        for (int axis = 0; axis < 3 && !ended; ++axis) {
            const int status = read_axis_widths(session, in, mesh, axis, node_form);
            if (status < 0) return -1;
            ended = status == 1;
        }
        if (!ended && read_trailer(session, in, mesh, place) != 0) return -1;
    } else if (tables) {
        mesh.nx = static_cast<int>(tables->x_widths.size());
        mesh.nz = static_cast<int>(tables->z_widths.size());
        mesh.ny = 3;
        size_widths(mesh);
        for (int i = 1; i <= mesh.nx; ++i) mesh.dx[i] = tables->x_widths[static_cast<std::size_t>(i - 1)];
        for (int i = 1; i <= mesh.nz; ++i) mesh.dz[i] = tables->z_widths[static_cast<std::size_t>(i - 1)];
        for (int i = 1; i <= 3; ++i) mesh.dy[i] = 100.0;
    }
    if (mesh.mesh_format == -100) mesh.mesh_format = 0;
    place.field = "cell geometry";
    if (derive_mesh_geometry(session, mesh, place.file_name) != 0) return -1;
    if (mesh.mesh_format == 5 && mesh.drape_top < mesh.drape_bottom) {
        mesh.drape_top = mesh.topo_min;
        mesh.drape_bottom = static_cast<float>(mesh.topo_min - (mesh.z_nodes[1] - mesh.z_nodes[mesh.nz + 1]));
        mesh.drape_range = mesh.drape_top - mesh.drape_bottom;
    }
    return 0;
}

/// The plain lines of a two-axis file: trimmed, not empty, not a comment.
bool read_uncommented_line(std::istream& in, std::string& line) {
    while (read_raw_line(in, line)) {
        line = trim(line);
        if (!line.empty() && line[0] != '!' && line[0] != '#') return true;
    }
    line.clear();
    return false;
}

/// Reads the x and z segments of a two-axis mesh. Returns 0, or -1 after a message.
int read_two_axis_tables(Session& session, std::istream& in, LoadedMesh& mesh, TwoAxisTables& tables) {
    std::string line;
    for (int pass = 0; pass < 2; ++pass) {
        std::vector<float>& widths = pass == 0 ? tables.x_widths : tables.z_widths;
        if (!read_uncommented_line(in, line)) break;
        const int segments = to_integer(parse_number_prefix(next_word(line)));
        double start = 0;
        for (int s = 0; s < segments; ++s) {
            if (!read_uncommented_line(in, line)) break;
            const std::string whole = line;
            if (s == 0) start = parse_number_prefix(next_word(line));
            const double end = parse_number_prefix(next_word(line));
            const int count = to_integer(parse_number_prefix(next_word(line)));
            if (start >= end || count < 1) {
                session.dialogue.message_box("The mesh line is invalid : " + whole);
                return -1;
            }
            if (s == 0) (pass == 0 ? mesh.x0 : mesh.z0) = start;
            const float width = static_cast<float>((end - start) / count);
            for (int k = 0; k < count; ++k) {
                if (static_cast<int>(widths.size()) >= two_axis_table_size)
                    throw std::out_of_range("more than 64384 cells on one axis of the two-axis mesh");
                widths.push_back(width);
            }
            start = end;
        }
    }
    mesh.y0 = -150.0;
    return 0;
}

/// Counts of a layered mesh's widths, read by token; `index(i)` gives the dz index of width i.
template <class Index>
int read_layer_widths(Session& session, std::istream& in, LoadedMesh& mesh, int count, const std::string& word, Index index) {
    std::string line;
    read_raw_line(in, line);  // the layer's heading
    TokenStream tokens(in);
    std::string_view token;
    for (int i = 1; i <= count; ++i) {
        if (!tokens.next(token)) break;
        if (!is_numeric(token)) {
            session.dialogue.message_box("The " + word + " mesh cell value is invalid : " + std::string(token));
            return -1;
        }
        const double width = parse_number_prefix(token);
        if (width <= 0) {
            session.dialogue.message_box("The " + word + " mesh cell value is not positive : " + std::string(token));
            return -1;
        }
        mesh.dz[index(i)] = width;
    }
    return 0;
}

/// The different values of `list`, in order. Sorted once at the end rather than kept sorted line by
/// line: a damaged table of all-different positions would otherwise cost the square of its length.
void sort_distinct(std::vector<double>& list) {
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
}

}  // namespace

int read_ubc_mesh(Session& session, std::istream& in, LoadedMesh& mesh) {
    ReadPlace place;
    return read_ubc_body(session, in, mesh, nullptr, place);
}

int read_layered_mesh(Session& session, std::istream& in, LoadedMesh& mesh) {
    const int air = mesh.air_cells;
    const int sea = mesh.sea_cells;
    if (read_layer_widths(session, in, mesh, mesh.earth_cells, "earth", [&](int i) { return air + sea + i; }) != 0) return -1;
    if (read_layer_widths(session, in, mesh, sea, "sea", [&](int i) { return air + i; }) != 0) return -1;
    if (read_layer_widths(session, in, mesh, air, "air", [&](int i) { return air + 1 - i; }) != 0) return -1;

    mesh.pad_x_low = 0;
    mesh.pad_x_high = 0;
    std::vector<double> xs, ys;
    std::string line;
    read_raw_line(in, line);  // the node table's heading
    const std::streampos table_start = in.tellg();
    const long long node_lines = static_cast<long long>(mesh.nx + 1) * (mesh.ny + 1);
    xs.reserve(static_cast<std::size_t>(node_lines));
    ys.reserve(static_cast<std::size_t>(node_lines));
    double depth_sum = 0;
    auto read_node = [&](double& x, double& y, double& depth) {
        if (!read_nonblank_line(in, line)) return false;
        std::replace(line.begin(), line.end(), ',', ' ');
        std::string_view rest = line;
        x = parse_number_prefix(next_word(rest));
        y = parse_number_prefix(next_word(rest));
        depth = parse_number_prefix(next_word(rest));
        return true;
    };
    for (long long n = 0; n < node_lines; ++n) {
        double x = 0, y = 0, depth = 0;
        if (!read_node(x, y, depth)) {
            session.dialogue.message_box("An error occurred while reading the mesh file");
            return -1;
        }
        xs.push_back(x);
        ys.push_back(y);
        depth_sum -= depth;
    }
    sort_distinct(xs);
    sort_distinct(ys);
    for (const auto& [axis, positions, nodes] :
         {std::tuple{"x", &xs, mesh.nx + 1}, std::tuple{"y", &ys, mesh.ny + 1}})
        if (positions->size() != static_cast<std::size_t>(nodes)) {
            session.dialogue.message_box("The node table of the mesh file holds " + std::to_string(positions->size()) +
                                         " different " + axis + " positions where the mesh has " +
                                         std::to_string(nodes) + " " + axis + " nodes");
            return -1;
        }
    // The ground level divides by the cell count, not by the number of node lines.
    const double ground = depth_sum / (static_cast<double>(mesh.nx) * mesh.ny);

    in.clear();
    in.seekg(table_start);
    mesh.has_topo = true;
    mesh.topo_grid.assign(mesh.nx + 1, mesh.ny + 1, null_value_single);
    for (long long n = 0; n < node_lines; ++n) {
        double x = 0, y = 0, depth = 0;
        if (!read_node(x, y, depth)) break;
        const int i = static_cast<int>(std::lower_bound(xs.begin(), xs.end(), x) - xs.begin()) + 1;
        const int j = static_cast<int>(std::lower_bound(ys.begin(), ys.end(), y) - ys.begin()) + 1;
        const float value = static_cast<float>(-depth);
        mesh.topo_grid(i, j) = value;
        mesh.topo_max = std::max(mesh.topo_max, value);
        mesh.topo_min = std::min(mesh.topo_min, value);
    }

    mesh.x0 = xs.at(0);
    mesh.y0 = ys.at(0);
    for (int i = 1; i <= mesh.nx; ++i) mesh.dx[i] = xs.at(static_cast<std::size_t>(i)) - xs.at(static_cast<std::size_t>(i - 1));
    for (int j = 1; j <= mesh.ny; ++j) mesh.dy[j] = ys.at(static_cast<std::size_t>(j)) - ys.at(static_cast<std::size_t>(j - 1));
    mesh.z0 = ground;
    for (int k = 1; k <= air + sea; ++k) mesh.z0 += mesh.dz[k];
    return 0;
}

namespace {

/// Padding on the low and high ends of one axis, by the 1.2 growth rule.
void detect_padding(const Array1<double>& widths, int n, int& low, int& high) {
    low = 0;
    high = 0;
    if (n >= 7) {
        while (low < 4 && widths[low + 1] / 1.2 > widths[low + 2]) ++low;
        while (high < 4 && widths[n - high] / 1.2 > widths[n - high - 1]) ++high;
    }
    if (low + high >= n - 2) {
        low = 0;
        high = 0;
    } else if (low == 3) {
        low = 4;
        ++high;
    }
    if (low == 1) low = 0;
    if (high == 1) high = 0;
}

double smallest_width(const Array1<double>& widths, int first, int last, double start) {
    double smallest = start;
    for (int i = first; i <= last; ++i)
        if (widths[i] > 0 && widths[i] < smallest) smallest = widths[i];
    return smallest;
}

}  // namespace

int derive_mesh_geometry(Session& session, LoadedMesh& mesh, std::string_view file_name) {
    struct Axis {
        const char* name;
        int& count;
        Array1<double>& widths;
        Array1<double>& nodes;
        Array1<double>& centres;
        double origin;
        double direction;
    };
    Axis axes[] = {{"x", mesh.nx, mesh.dx, mesh.x_nodes, mesh.x_centres, mesh.x0, 1.0},
                   {"y", mesh.ny, mesh.dy, mesh.y_nodes, mesh.y_centres, mesh.y0, 1.0},
                   {"z", mesh.nz, mesh.dz, mesh.z_nodes, mesh.z_centres, mesh.z0, -1.0}};
    for (Axis& axis : axes) {
        const int n = std::max(axis.count, 0);
        axis.nodes.assign(n + 1);
        axis.centres.assign(n);
        axis.nodes[1] = axis.origin;
        for (int i = 1; i <= n; ++i) {
            const double width = axis.widths[i];
            if (!(width > 0)) {
                std::string text = std::string("Bad ") + axis.name + " cell " + format_picture(i, "0") + " " +
                                   format_picture(width, "0.00");
                if (!file_name.empty())
                    text += " in the mesh file " + std::string(file_name) + ": every " + axis.name +
                            " cell needs a width above 0 (is it a mesh file, or did it end early?)";
                session.dialogue.message_box(text);
                axis.count = 0;
                return -1;
            }
            axis.nodes[i + 1] = axis.nodes[i] + axis.direction * width;
            axis.centres[i] = (axis.nodes[i] + axis.nodes[i + 1]) / 2;
        }
    }
    mesh.z_nodes_up.assign(mesh.nz + 1);
    for (int k = 1; k <= mesh.nz + 1; ++k) mesh.z_nodes_up[mesh.nz + 2 - k] = mesh.z_nodes[k];

    detect_padding(mesh.dx, mesh.nx, mesh.pad_x_low, mesh.pad_x_high);
    detect_padding(mesh.dy, mesh.ny, mesh.pad_y_low, mesh.pad_y_high);
    const bool ubc_like = mesh.mesh_format == 0 || mesh.mesh_format == 5;
    mesh.pad_z_low = ubc_like ? 0 : mesh.air_cells;
    mesh.pad_z_high = 0;
    if (ubc_like && mesh.nz >= 7) {
        int& top = mesh.pad_z_low;
        int& bottom = mesh.pad_z_high;
        while (bottom < 4 && mesh.dz[mesh.nz - bottom] / 1.2 > mesh.dz[mesh.nz - bottom - 1]) ++bottom;
        if (top + bottom >= mesh.nz - 2) {
            top = 0;
            bottom = 0;
        } else if (bottom == 3) {
            top = 0;
            ++bottom;
        }
        if (bottom == 1) bottom = 0;
    }
    mesh.core_dx = smallest_width(mesh.dx, mesh.pad_x_low + 1, mesh.nx - mesh.pad_x_high, mesh.dx[mesh.pad_x_low + 1]);
    mesh.core_dy = smallest_width(mesh.dy, mesh.pad_y_low + 1, mesh.ny - mesh.pad_y_high, mesh.dy[mesh.pad_y_low + 1]);
    mesh.core_dz = smallest_width(mesh.dz, mesh.pad_z_low + 1, mesh.nz - mesh.pad_z_high, mesh.dz[1]);
    return 0;
}

namespace {

/// The RES3DINV options; false when cancelled.
bool ask_inversion_file_options(Session& session, bool& swap_xy) {
    std::vector<OptionRow> rows{
        {"Swap X and Y coords", "Enable this option to interchange the X and Y coordinates in the inversion file", false},
        {"Flip X coord", "Enable this option to swap the sign of the X coordinate (before swap is applied)", false},
        {"Flip Y coord", "Enable this option to swap the sign of the Y coordinate (before swap is applied)", false},
        {"Mask model using data", "Enable this option to mask the models to the extents of the data", false}};
    if (!session.dialogue.ask_options("ResInv3D coordinate Option", rows)) return false;
    swap_xy = rows[0].checked;
    return true;
}

int read_mesh_stream(Session& session, std::istream& in, LoadedMesh& mesh, int model_kind, ReadPlace& place) {
    std::string line;
    read_nonblank_line(in, line);
    if (const std::size_t bang = line.find('!'); bang != std::string::npos) line = trim(line.substr(0, bang));

    std::array<double, 514> fields{};
    int numeric = 0;
    std::string last_token;
    std::string rest = line;
    while (!rest.empty()) {
        last_token = next_word(rest);
        if (!is_numeric(last_token)) break;
        fields[static_cast<std::size_t>(++numeric)] = parse_number_prefix(last_token);
        if (numeric == 3) break;
    }
    // GOCAD voxets and VTK files are recognised and turned away without a word.
    if (to_upper(last_token) == "GOCAD" && to_upper(rest.substr(0, 5)) == "VOXET") return -2;
    if (contains(line, "vtk DataFile")) return -2;
    if (contains(line, "grid nodes in x y z")) {
        numeric = 3;
        read_nonblank_line(in, line);
        const std::vector<std::string> parts = split_fields(line, 3, ',');
        for (std::size_t k = 0; k < 3; ++k) fields[k + 1] = k < parts.size() ? parse_number_prefix(parts[k]) : 0.0;
    }

    int format = 0;
    if (numeric != 1 && numeric != 3) {
        // The first line was a title: the second decides.
        read_nonblank_line(in, line);
        bool valid = false;
        double first_count = 0, second_count = 0;
        if (contains(line, "Number of north")) {
            format = 1;
            valid = true;
        } else {
            std::replace(line.begin(), line.end(), ',', ' ');
            std::string counts = line;
            const std::string first = next_word(counts);
            if (is_numeric(first)) {
                first_count = parse_number_prefix(first);
                std::string second = next_word(counts);
                if (second.empty() && read_nonblank_line(in, line)) {
                    std::replace(line.begin(), line.end(), ',', ' ');
                    counts = line;
                    second = next_word(counts);
                }
                if (is_numeric(second)) {
                    second_count = parse_number_prefix(second);
                    if (read_nonblank_line(in, line)) {
                        std::string spacing = line;
                        std::replace(spacing.begin(), spacing.end(), ',', ' ');
                        const std::string a = next_word(spacing);
                        const std::string b = next_word(spacing);
                        if (contains(line, "Nonuniform grid"))
                            format = 3;
                        else if (contains(line, "Trapezoidal Grid used"))
                            format = 4;
                        else if (is_numeric(a) && is_numeric(b))
                            format = 2;
                        valid = format != 0;
                    }
                }
            }
        }
        if (!valid) {
            session.dialogue.message_box("The format of the mesh file is invalid");
            return -1;
        }
        if (format == 1) {
            read_nonblank_line(in, line);
            const int north = cell_count(parse_number_prefix(next_word(line)));
            const int east = cell_count(parse_number_prefix(next_word(line)));
            mesh.earth_cells = cell_count(parse_number_prefix(next_word(line)));
            mesh.sea_cells = cell_count(parse_number_prefix(next_word(line)));
            mesh.air_cells = cell_count(parse_number_prefix(next_word(line)));
            mesh.ny = north;
            mesh.nx = east;
            const double layers = static_cast<double>(mesh.earth_cells) + mesh.sea_cells + mesh.air_cells;
            mesh.nz = layers <= 2147483647.0 ? static_cast<int>(layers) : 0;
        } else {
            bool swap_xy = false;
            if (!ask_inversion_file_options(session, swap_xy)) {
                session.dialogue.message_box("The inversion input has been cancelled");
                return -1;
            }
            const int first = cell_count(first_count);
            const int second = cell_count(second_count);
            mesh.nx = (swap_xy ? second : first) - 1;
            mesh.ny = (swap_xy ? first : second) - 1;
            mesh.nz = 10;
        }
    } else if (numeric == 3) {
        mesh.nx = cell_count(fields[1]);
        mesh.ny = cell_count(fields[2]);
        mesh.nz = cell_count(fields[3]);
    } else {
        format = -100;
    }
    mesh.mesh_format = format;

    if (format != -100) {
        if (mesh.nx < 1 || mesh.ny < 1 || mesh.nz < 1) {
            session.dialogue.message_box("The number of cells in the mesh file is invalid");
            return -1;
        }
        // Asked before the widths are taken: a line of a few bytes can claim a billion cells. The widths
        // of a plain file may come as repeats ("1000*10"); a layered file lists each width and node.
        place.field = "cell counts";
        double values = 0;
        if (format == 0) values = static_cast<double>(mesh.nx) + mesh.ny + mesh.nz;
        if (format == 1) values = static_cast<double>(mesh.nz) + 3 * (mesh.nx + 1.0) * (mesh.ny + 1.0);
        const double bytes = bytes_left(in);
        const bool repeats = format == 0 && bytes >= 0 && values > values_held(bytes) && has_repeats(in);
        const std::string refusal = mesh_file_refusal(place.file_name, mesh, values, bytes, repeats);
        if (!refusal.empty()) {
            session.dialogue.message_box(refusal);
            return -1;
        }
        size_widths(mesh);
    }

    if (format == 0 || format == -100) {
        in.clear();
        in.seekg(0);
        if (format == -100) {
            TwoAxisTables tables;
            place.field = "segments";
            if (read_two_axis_tables(session, in, mesh, tables) != 0) return -1;
            if (read_ubc_body(session, in, mesh, &tables, place) != 0) return -1;
        } else if (read_ubc_body(session, in, mesh, nullptr, place) != 0) {
            return -1;
        }
    } else if (format == 1) {
        place.field = "layers and node table";
        if (read_layered_mesh(session, in, mesh) != 0) return -1;
    }
    // Formats 2 to 4 read no cells: only their counts and the dialogue are used.

    if (model_kind == 3) {
        double extent = 0;
        for (int j = 1; j <= mesh.dy.size(); ++j) extent += mesh.dy[j];
        mesh.y0 -= extent;
    }
    place.field = "cell geometry";
    if (derive_mesh_geometry(session, mesh, place.file_name) != 0 || mesh.nx < 1 || mesh.ny < 1 || mesh.nz < 1) return -1;

    if (mesh.has_topo) {
        if (mesh.mesh_format >= 2 && mesh.mesh_format <= 5) mesh.surface_level = static_cast<float>(mesh.z0);
        mesh.surface_varies = mesh.mesh_format > 0 && mesh.topo_max > mesh.topo_min ? 1 : 0;
    }
    if (mesh.mesh_format == 1) mesh.surface_level = static_cast<float>(mesh.z_nodes[mesh.air_cells + mesh.sea_cells + 1]);
    mesh.scale_factor = 1.0;
    mesh.loaded = true;
    return 0;
}

}  // namespace

int read_mesh_file(Session& session, const std::string& file_name, int model_kind) {
    LoadedMesh& mesh = session.loaded_mesh;
    ReadPlace place{file_name};
    try {
        require_regular_file(native_path(file_name), "mesh file");
        std::ifstream in(native_path(file_name), std::ios::binary);
        if (!in) throw std::runtime_error("The mesh file " + file_name + " could not be opened.");
        const int status = read_mesh_stream(session, in, mesh, model_kind, place);
        if (status != 0) mesh.loaded = false;
        if (status == 0) {
            const std::string warning = large_mesh_warning("mesh file " + file_name, static_cast<double>(mesh.nx) * mesh.ny * mesh.nz);
            if (!warning.empty()) session.dialogue.message_box(warning);
        }
        return status;
    } catch (const std::exception& fault) {
        mesh.loaded = false;
        session.dialogue.message_box("An error occurred while reading the mesh file : \n" +
                                     read_fault_text("mesh file", file_name, place.field, fault));
        return -1;
    }
}

}  // namespace invsetup
