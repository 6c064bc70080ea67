// src/modelfiles/mesh_file_write.cpp - the mesh file writer.
#include "modelfiles/mesh_file_write.h"

#include <cmath>

#include "mesh/inversion_mesh.h"
#include "support/lines.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {
namespace {

constexpr int token_width = 11;
constexpr std::size_t width_line_limit = 132;
constexpr std::size_t topo_line_limit = 70;
// Widths within a thousandth share a run. The limit sits a hair below 0.001 so that widths that
// differ by 0.001 as written (10 and 10.001) stay two runs despite binary rounding.
constexpr double run_tolerance = 0.001 - 1e-9;

std::string run_token(int count, double value) {
    if (count == 1) return format_picture(value, "0.0000");
    return format_picture(count, "0") + "*" + format_picture(value, "0.0000");
}

}  // namespace

MeshFileRequest whole_mesh_request(const InversionMesh& mesh) {
    MeshFileRequest request;
    request.last_x = mesh.nx + 1;
    request.last_y = mesh.ny + 1;
    request.last_z = mesh.nz + 1;
    return request;
}

std::vector<std::string> width_lines(const Array1<double>& widths, int first, int last) {
    std::vector<std::string> lines;
    std::string buffer;
    int run_count = 0;
    double run_value = -1.0;
    for (int i = first; i < last; ++i) {
        const double w = widths[i];
        if (run_count == 0) {
            run_count = 1;
            run_value = w;
        } else if (std::fabs(run_value - w) < run_tolerance) {
            // The run keeps its first value, so slowly creeping widths drift inside one run.
            ++run_count;
        } else {
            buffer += right_justify(run_token(run_count, run_value), token_width);
            buffer += ' ';
            run_count = 1;
            run_value = w;
        }
        if (buffer.size() >= width_line_limit) {
            lines.push_back(std::move(buffer));
            buffer.clear();
        }
    }
    // The last run is neither fitted nor followed by a blank; with no cells at all it is "0*-1.0000".
    buffer += run_token(run_count, run_value);
    lines.push_back(std::move(buffer));
    return lines;
}

std::vector<std::string> mesh_file_lines(const InversionMesh& mesh, const MeshFileRequest& request) {
    std::vector<std::string> lines;
    auto append = [&lines](std::vector<std::string>&& more) {
        for (std::string& line : more) lines.push_back(std::move(line));
    };
    if (request.headerless > 0) {
        // A tile's expanded mesh carries only its z widths: the x and y lines cover no cells.
        append(width_lines(mesh.dx, 1, 1));
        append(width_lines(mesh.dy, 1, 1));
    } else {
        lines.push_back(format_picture(request.last_x - request.first_x, "0") + " " +
                        format_picture(request.last_y - request.first_y, "0") + " " +
                        format_picture(request.last_z - request.first_z, "0"));
        // Not a picture: the origin keeps the coordinates' full precision.
        lines.push_back(number_to_text(mesh.x_nodes[request.first_x]) + " " +
                        number_to_text(mesh.y_nodes[request.first_y]) + " " +
                        number_to_text(mesh.z_nodes[request.first_z]));
        append(width_lines(mesh.dx, request.first_x, request.last_x));
        append(width_lines(mesh.dy, request.first_y, request.last_y));
    }
    append(width_lines(mesh.dz, request.first_z, request.last_z));
    if (!request.write_extended) return lines;

    if (request.mesh_format == 4 && !request.has_topo)
        lines.emplace_back("Mesh format: 2");
    else
        lines.push_back("Mesh format: " + format_picture(request.mesh_format, "0"));
    if (request.mesh_format == 5 && request.drape_top > request.drape_bottom)
        lines.push_back("Mesh topo drape: " + format_picture(request.drape_top, "0.0") + " " +
                        format_picture(request.drape_bottom, "0.0"));
    if (request.air_cells > 0) lines.push_back("Number of air cells: " + format_picture(request.air_cells, "0.0"));
    if (request.sea_cells > 0) lines.push_back("Number of sea cells: " + format_picture(request.sea_cells, "0.0"));

    if (request.mesh_format >= 2 && request.mesh_format <= 5 && request.has_topo && request.topo_grid) {
        const Array2<float>& topo = *request.topo_grid;
        lines.emplace_back("Topography (from lower-left by row)");
        std::string buffer;
        for (int j = request.first_y; j <= request.last_y; ++j) {
            for (int i = request.first_x; i <= request.last_x; ++i) {
                append_picture(buffer, topo(i, j), "0.00");
                buffer += "  ";
                if (buffer.size() > topo_line_limit) {
                    lines.push_back(std::move(buffer));
                    buffer.clear();
                }
            }
            // Each row starts on a new line; an empty remainder makes no line.
            if (!buffer.empty()) {
                lines.push_back(std::move(buffer));
                buffer.clear();
            }
        }
    }
    if (request.has_trapezoid && request.trapezoid_nodes) {
        const Array2<std::array<double, 2>>& nodes = *request.trapezoid_nodes;
        lines.emplace_back("Trapezoidal nodes");
        for (int j = request.first_y; j <= request.last_y; ++j)
            for (int i = request.first_x; i <= request.last_x; ++i)
                lines.push_back(format_picture(nodes(i, j)[0], "0.00") + "  " + format_picture(nodes(i, j)[1], "0.00"));
    }
    return lines;
}

void write_mesh_file(const std::filesystem::path& path, const InversionMesh& mesh, const MeshFileRequest& request) {
    write_text_lines(path, mesh_file_lines(mesh, request));
}

}  // namespace invsetup
