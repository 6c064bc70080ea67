// src/modelfiles/vtk_export.cpp - a run package as VTK XML files.
#include "modelfiles/vtk_export.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "modelfiles/mesh_file_read.h"
#include "session.h"
#include "support/files.h"
#include "support/lines.h"
#include "support/text.h"

namespace invsetup {

namespace {

namespace fs = std::filesystem;

static_assert(std::endian::native == std::endian::little, "the VTK files are written little-endian as they lie in memory");

/// One VTK XML file with its arrays appended raw: the XML names each array's offset in the block
/// that follows it; each block is its byte count (UInt64) and the bytes. The arrays stay the
/// caller's until write().
class VtkXmlFile {
public:
    explicit VtkXmlFile(const std::string& type) : type_(type) {
        xml_ = "<?xml version=\"1.0\"?>\n<VTKFile type=\"" + type +
               "\" version=\"1.0\" byte_order=\"LittleEndian\" header_type=\"UInt64\">\n";
    }
    void text(const std::string& line) { xml_ += line + "\n"; }

    template <typename T>
    void array(const char* vtk_type, const std::string& name, int components, const std::vector<T>& values) {
        xml_ += "<DataArray type=\"" + std::string(vtk_type) + "\" Name=\"" + name + "\" NumberOfComponents=\"" +
                std::to_string(components) + "\" format=\"appended\" offset=\"" + std::to_string(offset_) + "\"/>\n";
        const std::uint64_t bytes = values.size() * sizeof(T);
        blocks_.push_back({values.data(), bytes});
        offset_ += sizeof(std::uint64_t) + bytes;
    }

    void write(const fs::path& path) {
        xml_ += "</" + type_ + ">\n<AppendedData encoding=\"raw\">\n_";
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(std::fopen(path.string().c_str(), "wb"), std::fclose);
        if (!out) throw std::runtime_error("cannot create " + path.string());
        bool good = std::fwrite(xml_.data(), 1, xml_.size(), out.get()) == xml_.size();
        for (const Block& block : blocks_) {
            good = good && std::fwrite(&block.bytes, sizeof block.bytes, 1, out.get()) == 1;
            good = good && (block.bytes == 0 ||
                            std::fwrite(block.data, 1, block.bytes, out.get()) == block.bytes);
        }
        const char tail[] = "\n</AppendedData>\n</VTKFile>\n";
        good = good && std::fwrite(tail, 1, sizeof tail - 1, out.get()) == sizeof tail - 1;
        if (std::fclose(out.release()) != 0 || !good) throw std::runtime_error("cannot write " + path.string());
    }

private:
    struct Block {
        const void* data;
        std::uint64_t bytes;
    };
    std::string type_;
    std::string xml_;
    std::vector<Block> blocks_;
    std::uint64_t offset_ = 0;
};

std::string read_whole(const fs::path& file) {
    require_regular_file(file, "run file");
    std::ifstream in(file, std::ios::binary);
    if (!in) throw std::runtime_error("The run file " + file.string() + " could not be opened.");
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    std::string text(error ? 0 : static_cast<std::size_t>(size), '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    return text;
}

/// The numbers of one line of text, as many as `most`; false at a word that is not a number.
bool line_numbers(std::string_view line, std::vector<double>& numbers, std::size_t most) {
    numbers.clear();
    const char* at = line.data();
    const char* const end = at + line.size();
    while (numbers.size() < most) {
        while (at < end && (*at == ' ' || *at == '\t' || *at == ',' || *at == '\r')) ++at;
        if (at >= end) break;
        if (*at == '+') ++at;
        double value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error != std::errc() || (next < end && *next != ' ' && *next != '\t' && *next != ',' && *next != '\r'))
            return false;
        if (!std::isfinite(value)) return false;  // "inf" and "nan" are no coordinates for ParaView
        numbers.push_back(value);
        at = next;
    }
    return true;
}

struct Mesh {
    int nx = 0, ny = 0, nz = 0;
    std::vector<double> x, y, z_up;  // node coordinates, rising
};

Mesh read_package_mesh(Session& session, const fs::path& file) {
    // The reader fills session.loaded_mesh: the session's own loaded mesh is kept aside meanwhile.
    LoadedMesh kept = std::move(session.loaded_mesh);
    clear_mesh(session.loaded_mesh);
    const int status = read_mesh_file(session, file.string());
    LoadedMesh loaded = std::move(session.loaded_mesh);
    session.loaded_mesh = std::move(kept);
    if (status != 0 || !loaded.loaded || loaded.nx <= 0 || loaded.ny <= 0 || loaded.nz <= 0)
        throw std::invalid_argument("the mesh file " + file.string() + " could not be read");
    Mesh mesh;
    mesh.nx = loaded.nx;
    mesh.ny = loaded.ny;
    mesh.nz = loaded.nz;
    for (int i = 1; i <= mesh.nx + 1; ++i) mesh.x.push_back(loaded.x_nodes[i]);
    for (int j = 1; j <= mesh.ny + 1; ++j) mesh.y.push_back(loaded.y_nodes[j]);
    for (int k = mesh.nz + 1; k >= 1; --k) mesh.z_up.push_back(loaded.z_nodes[k]);
    return mesh;
}

/// topo.dat: the count, then x y z of each node, x fastest. Empty when the count is not that of the
/// mesh's nodes.
std::vector<double> read_topo_nodes(const fs::path& file, const Mesh& mesh, VtkExportSummary& summary) {
    const std::string text = read_whole(file);
    std::vector<double> numbers, elevations;
    std::size_t start = 0, line_number = 0;
    long long count = -1;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string_view line(text.data() + start, end - start);
        start = end + 1;
        ++line_number;
        if (trim(line).empty()) continue;
        if (!line_numbers(line, numbers, 3) || numbers.empty())
            throw std::invalid_argument(file.string() + " line " + std::to_string(line_number) + " is not numbers: " + std::string(line));
        if (count < 0) {
            count = static_cast<long long>(numbers[0]);
            continue;
        }
        if (numbers.size() < 3) throw std::invalid_argument(file.string() + " line " + std::to_string(line_number) + " has no x y z");
        elevations.push_back(numbers[2]);
    }
    const std::size_t nodes = static_cast<std::size_t>(mesh.nx + 1) * static_cast<std::size_t>(mesh.ny + 1);
    if (elevations.size() != nodes || count != static_cast<long long>(nodes)) {
        summary.skipped.push_back(file.filename().string() + ": " + std::to_string(elevations.size()) +
                                  " nodes for the mesh's " + std::to_string(nodes));
        return {};
    }
    return elevations;
}

struct Readings {
    std::vector<double> points;  // x y z
    std::vector<double> value, error;
};

/// An observation file: header lines, then the line that holds the count alone, then x y z value
/// [error] per reading.
Readings read_observations(const fs::path& file) {
    const std::string text = read_whole(file);
    Readings readings;
    std::vector<double> numbers;
    std::size_t start = 0, line_number = 0;
    long long count = -1;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string_view line(text.data() + start, end - start);
        start = end + 1;
        ++line_number;
        if (trim(line).empty()) continue;
        const bool numeric = line_numbers(line, numbers, 6);
        if (count < 0) {
            if (numeric && numbers.size() == 1) count = static_cast<long long>(numbers[0]);
            continue;
        }
        if (static_cast<long long>(readings.value.size()) == count) break;
        if (!numeric || numbers.size() < 4)
            throw std::invalid_argument(file.string() + " line " + std::to_string(line_number) +
                                        " is not a reading (x y z value error): " + std::string(line));
        readings.points.insert(readings.points.end(), numbers.begin(), numbers.begin() + 3);
        readings.value.push_back(numbers[3]);
        readings.error.push_back(numbers.size() > 4 ? numbers[4] : 0.0);
    }
    if (count < 0) throw std::invalid_argument(file.string() + " has no line with the count of its readings");
    if (static_cast<long long>(readings.value.size()) != count)
        throw std::invalid_argument(file.string() + " says " + std::to_string(count) + " readings and holds " +
                                    std::to_string(readings.value.size()));
    return readings;
}

struct TileOutline {
    int i = 0, j = 0;
    double x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    bool kept = true;
};

/// The tiles of a tiled run from their batch files' "rem Coord Boundaries:" lines, and whether the
/// merge script calls them.
std::vector<TileOutline> read_tiles(const fs::path& run_directory) {
    std::vector<TileOutline> tiles;
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(run_directory, error)) {
        const std::string name = entry.path().filename().string();
        if (name.size() == 12 && name.rfind("tile", 0) == 0 && name.compare(8, 4, ".bat") == 0 &&
            std::all_of(name.begin() + 4, name.begin() + 8, [](char c) { return c >= '0' && c <= '9'; }))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::string calls;
    if (fs::exists(run_directory / "iter_all.bat")) calls = read_whole(run_directory / "iter_all.bat");
    std::vector<double> numbers;
    for (const fs::path& file : files) {
        require_regular_file(file, "tile batch file");
        std::ifstream in(file, std::ios::binary);
        std::string line;
        read_line(in, line);
        const std::string head = "rem Coord Boundaries: ";
        if (line.rfind(head, 0) != 0 || !line_numbers(std::string_view(line).substr(head.size()), numbers, 4) ||
            numbers.size() < 4)
            throw std::invalid_argument(file.string() + " does not start with its coordinate boundaries");
        TileOutline tile;
        const std::string name = file.stem().string();
        tile.i = std::stoi(name.substr(4, 2));
        tile.j = std::stoi(name.substr(6, 2));
        tile.x0 = numbers[0];
        tile.x1 = numbers[1];
        tile.y0 = numbers[2];
        tile.y1 = numbers[3];
        // A skipped tile's call is a comment ("rem call tileIIJJ.bat").
        const std::string call = "call " + name + ".bat";
        for (std::size_t at = calls.find(call); at != std::string::npos; at = calls.find(call, at + 1))
            if (at >= 4 && calls.compare(at - 4, 4, "rem ") == 0) tile.kept = false;
        tiles.push_back(tile);
    }
    return tiles;
}

std::string extent(int nx, int ny, int nz) {
    return "0 " + std::to_string(nx) + " 0 " + std::to_string(ny) + " 0 " + std::to_string(nz);
}

bool is_model_file(const fs::path& path) {
    const std::string extension = path.extension().string();
    return extension == ".sus" || extension == ".den";
}

void export_files(Session& session, const fs::path& run, const fs::path& out, VtkExportSummary& summary) {
    const Mesh mesh = read_package_mesh(session, run / "mesh");
    fs::create_directories(out);
    const std::size_t nx = static_cast<std::size_t>(mesh.nx), ny = static_cast<std::size_t>(mesh.ny),
                      nz = static_cast<std::size_t>(mesh.nz);
    const std::size_t cells = nx * ny * nz;
    std::vector<std::string> pieces;

    // The surface, which also decides the air cells.
    std::vector<double> surface;
    if (fs::exists(run / "topo.dat")) surface = read_topo_nodes(run / "topo.dat", mesh, summary);
    if (!surface.empty()) {
        std::vector<double> points;
        points.reserve(surface.size() * 3);
        for (std::size_t j = 0; j <= ny; ++j)
            for (std::size_t i = 0; i <= nx; ++i) {
                points.push_back(mesh.x[i]);
                points.push_back(mesh.y[j]);
                points.push_back(surface[j * (nx + 1) + i]);
            }
        VtkXmlFile file("StructuredGrid");
        const std::string whole = extent(mesh.nx, mesh.ny, 0);
        file.text("<StructuredGrid WholeExtent=\"" + whole + "\">\n<Piece Extent=\"" + whole + "\">");
        file.text("<PointData Scalars=\"elevation\">");
        file.array("Float64", "elevation", 1, surface);
        file.text("</PointData>\n<CellData>\n</CellData>\n<Points>");
        file.array("Float64", "Points", 3, points);
        file.text("</Points>\n</Piece>");
        summary.written.push_back(out / "topography.vts");
        file.write(summary.written.back());
    }

    // The models, in the grid's cell order: x fastest, then y, then z rising; the files run z
    // fastest from the top, then x, then y.
    std::vector<std::pair<std::string, std::vector<float>>> models;
    std::vector<fs::path> model_files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(run, error)) {
        if (!is_model_file(entry.path())) continue;
        if (entry.is_regular_file())
            model_files.push_back(entry.path());
        else  // a folder or a pipe named like a model is told of, not passed over
            summary.skipped.push_back(entry.path().filename().string() + ": not a regular file");
    }
    std::sort(model_files.begin(), model_files.end());
    for (const fs::path& path : model_files) {
        std::vector<float> values = read_plain_model(path);
        if (values.size() != cells) {
            summary.skipped.push_back(path.filename().string() + ": " + std::to_string(values.size()) +
                                      " values for " + std::to_string(cells) + " cells");
            continue;
        }
        std::vector<float> cell_values(cells);
        const float* source = values.data();
        for (std::size_t j = 0; j < ny; ++j)
            for (std::size_t i = 0; i < nx; ++i)
                for (std::size_t k_down = 0; k_down < nz; ++k_down)
                    cell_values[(nz - 1 - k_down) * nx * ny + j * nx + i] = *source++;
        models.emplace_back(path.filename().string(), std::move(cell_values));
    }

    std::vector<std::uint8_t> air(cells, 0);
    if (!surface.empty()) {
        for (std::size_t j = 0; j < ny; ++j)
            for (std::size_t i = 0; i < nx; ++i) {
                const double level = (surface[j * (nx + 1) + i] + surface[j * (nx + 1) + i + 1] +
                                      surface[(j + 1) * (nx + 1) + i] + surface[(j + 1) * (nx + 1) + i + 1]) /
                                     4;
                for (std::size_t k = 0; k < nz && mesh.z_up[nz - k] > level; ++k)  // from the top cell down
                    air[(nz - 1 - k) * nx * ny + j * nx + i] = 1;
            }
    }

    {
        VtkXmlFile file("RectilinearGrid");
        const std::string whole = extent(mesh.nx, mesh.ny, mesh.nz);
        file.text("<RectilinearGrid WholeExtent=\"" + whole + "\">\n<Piece Extent=\"" + whole + "\">");
        file.text("<PointData>\n</PointData>");
        file.text(models.empty() ? "<CellData Scalars=\"air\">" : "<CellData Scalars=\"" + models.front().first + "\">");
        for (const auto& [name, values] : models) file.array("Float32", name, 1, values);
        file.array("UInt8", "air", 1, air);
        file.text("</CellData>\n<Coordinates>");
        file.array("Float64", "x", 1, mesh.x);
        file.array("Float64", "y", 1, mesh.y);
        file.array("Float64", "z", 1, mesh.z_up);
        file.text("</Coordinates>\n</Piece>");
        summary.written.push_back(out / "mesh.vtr");
        file.write(summary.written.back());
    }

    for (const char* name : {"mag.obs", "grav.obs"}) {
        if (!fs::exists(run / name)) continue;
        const Readings readings = read_observations(run / name);
        const std::size_t count = readings.value.size();
        std::vector<std::int64_t> connectivity(count), offsets(count);
        for (std::size_t n = 0; n < count; ++n) {
            connectivity[n] = static_cast<std::int64_t>(n);
            offsets[n] = static_cast<std::int64_t>(n + 1);
        }
        VtkXmlFile file("PolyData");
        file.text("<PolyData>\n<Piece NumberOfPoints=\"" + std::to_string(count) + "\" NumberOfVerts=\"" +
                  std::to_string(count) + "\" NumberOfLines=\"0\" NumberOfStrips=\"0\" NumberOfPolys=\"0\">");
        file.text("<PointData Scalars=\"value\">");
        file.array("Float64", "value", 1, readings.value);
        file.array("Float64", "error", 1, readings.error);
        file.text("</PointData>\n<CellData>\n</CellData>\n<Points>");
        file.array("Float64", "Points", 3, readings.points);
        file.text("</Points>\n<Verts>");
        file.array("Int64", "connectivity", 1, connectivity);
        file.array("Int64", "offsets", 1, offsets);
        file.text("</Verts>\n</Piece>");
        std::string stem = name;
        stem[stem.find('.')] = '_';
        summary.written.push_back(out / (stem + ".vtp"));
        file.write(summary.written.back());
    }

    const std::vector<TileOutline> tiles = read_tiles(run);
    if (!tiles.empty()) {
        std::vector<double> points;
        std::vector<std::int64_t> connectivity, offsets;
        std::vector<std::int32_t> tile_i, tile_j;
        std::vector<std::uint8_t> kept;
        const double top = mesh.z_up.back();
        for (const TileOutline& tile : tiles) {
            const std::int64_t first = static_cast<std::int64_t>(points.size() / 3);
            for (const auto& [x, y] : {std::pair{tile.x0, tile.y0}, std::pair{tile.x1, tile.y0},
                                       std::pair{tile.x1, tile.y1}, std::pair{tile.x0, tile.y1}})
                points.insert(points.end(), {x, y, top});
            for (std::int64_t corner : {0, 1, 2, 3, 0}) connectivity.push_back(first + corner);
            offsets.push_back(static_cast<std::int64_t>(connectivity.size()));
            tile_i.push_back(tile.i);
            tile_j.push_back(tile.j);
            kept.push_back(tile.kept ? 1 : 0);
        }
        VtkXmlFile file("PolyData");
        file.text("<PolyData>\n<Piece NumberOfPoints=\"" + std::to_string(points.size() / 3) +
                  "\" NumberOfVerts=\"0\" NumberOfLines=\"" + std::to_string(tiles.size()) +
                  "\" NumberOfStrips=\"0\" NumberOfPolys=\"0\">");
        file.text("<PointData>\n</PointData>\n<CellData Scalars=\"kept\">");
        file.array("Int32", "tile_i", 1, tile_i);
        file.array("Int32", "tile_j", 1, tile_j);
        file.array("UInt8", "kept", 1, kept);
        file.text("</CellData>\n<Points>");
        file.array("Float64", "Points", 3, points);
        file.text("</Points>\n<Lines>");
        file.array("Int64", "connectivity", 1, connectivity);
        file.array("Int64", "offsets", 1, offsets);
        file.text("</Lines>\n</Piece>");
        summary.written.push_back(out / "tiles.vtp");
        file.write(summary.written.back());
    }

    // One file that opens them all.
    std::string collection = "<?xml version=\"1.0\"?>\n<VTKFile type=\"Collection\" version=\"1.0\">\n<Collection>\n";
    int part = 0;
    for (const fs::path& path : summary.written)
        collection += "<DataSet part=\"" + std::to_string(part++) + "\" file=\"" + path.filename().string() + "\"/>\n";
    collection += "</Collection>\n</VTKFile>\n";
    summary.written.push_back(out / "run.pvd");
    std::ofstream pvd(summary.written.back(), std::ios::binary | std::ios::trunc);
    if (!(pvd << collection) || !pvd.flush()) throw std::runtime_error("cannot write " + summary.written.back().string());
}

}  // namespace

std::vector<float> read_plain_model(const fs::path& file) {
    const std::string text = read_whole(file);
    std::vector<float> values;
    values.reserve(text.size() / 13 + 1);
    const char* at = text.data();
    const char* const end = at + text.size();
    std::size_t line = 1;
    while (at < end) {
        const char c = *at;
        if (c == '\n') {
            ++line;
            ++at;
            continue;
        }
        if (c == ' ' || c == '\t' || c == '\r' || c == ',') {
            ++at;
            continue;
        }
        if (c == '+') ++at;
        float value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error == std::errc::result_out_of_range || (error == std::errc() && !std::isfinite(value))) {
            // Beyond a single real: the null of the files (-1e32) fits, so only a typing slip lands here.
            throw std::runtime_error(file.string() + " line " + std::to_string(line) +
                                     ": the value is not a finite number a single real holds");
        }
        if (error != std::errc() || (next < end && *next != ' ' && *next != '\t' && *next != '\r' && *next != '\n' &&
                                     *next != ',')) {
            const char* line_end = std::find(at, end, '\n');
            throw std::runtime_error(file.string() + " line " + std::to_string(line) + " is not a number: " +
                                     trim(std::string_view(at, static_cast<std::size_t>(line_end - at))));
        }
        values.push_back(value);
        at = next;
    }
    return values;
}

int export_run_to_vtk(Session& session, const fs::path& run_directory, const fs::path& output_directory,
                      VtkExportSummary& summary) {
    summary = VtkExportSummary{};
    if (!fs::exists(run_directory / "mesh")) {
        session.dialogue.message_box("The run directory " + run_directory.string() + " holds no mesh file (mesh)");
        return -1;
    }
    try {
        export_files(session, run_directory, output_directory, summary);
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box(std::string("The ParaView files could not be written: ") + fault.what());
        return -1;
    }
}

}  // namespace invsetup
