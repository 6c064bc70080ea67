// bench/make_examples.cpp - writes the bundled example surveys: synthetic but real-looking data over
// hilly terrain with a buried body, and the definition files that use them.
//   make_examples [EXAMPLES_DIR]      (default: examples)
// magnetic/  airborne total-field survey, east-west flight lines, UBC Magnetic V5
// zarninv/   a second airborne magnetic survey for the in-house method (total field, data type 1)
// gravity/   ground gravity stations on a jittered grid, UBC Gravity V5
// Every number comes from a fixed-seed generator of our own, so the files are the same on every
// machine and compiler.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "definition/parameter_file.h"
#include "form/inversion_definition.h"
#include "support/lines.h"

namespace {

namespace fs = std::filesystem;
constexpr double pi = 3.14159265358979323846;

/// A small deterministic generator (64-bit LCG) with uniform and normal draws.
class Noise {
public:
    explicit Noise(std::uint64_t seed) : state_(seed) {}
    double uniform() {
        state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<double>(state_ >> 11) / 9007199254740992.0;
    }
    double normal() {
        const double u1 = uniform() + 1e-12, u2 = uniform();
        return std::sqrt(-2 * std::log(u1)) * std::cos(2 * pi * u2);
    }

private:
    std::uint64_t state_;
};

/// Rolling hills round a mean elevation: a few long waves and two ridges.
struct Terrain {
    double x0, y0, mean;
    double at(double x, double y) const {
        const double u = (x - x0) / 1000.0, v = (y - y0) / 1000.0;
        double z = mean + 45 * std::sin(0.9 * u + 0.3) * std::cos(0.7 * v - 0.2) + 25 * std::sin(1.9 * u + 1.7 * v);
        z += 60 * std::exp(-((u - 2.8) * (u - 2.8) + (v - 1.2) * (v - 1.2)) / 0.8);  // a hill in the east
        z -= 35 * std::exp(-((u - 0.8) * (u - 0.8)) / 0.15 - ((v - 3.0) * (v - 3.0)) / 2.0);  // a valley
        return z;
    }
};

/// A buried body as small cubes of equal size: a dipping tabular body (a dyke) or a compact pipe.
struct Body {
    std::vector<double> x, y, z;
    double cell_volume = 0;
};

Body dipping_dyke(double cx, double cy, double top, double strike_length, double width, double depth_extent,
                  double dip_degrees, double cube) {
    Body body;
    body.cell_volume = cube * cube * cube;
    const double run = 1.0 / std::tan(dip_degrees * pi / 180);
    for (double d = cube / 2; d < depth_extent; d += cube)
        for (double s = -strike_length / 2; s < strike_length / 2; s += cube)
            for (double w = -width / 2; w < width / 2; w += cube) {
                // Strikes north-north-east, dips to the east.
                const double along = s, across = w + d * run;
                body.x.push_back(cx + across * std::cos(0.35) + along * std::sin(0.35));
                body.y.push_back(cy - across * std::sin(0.35) + along * std::cos(0.35));
                body.z.push_back(top - d);
            }
    return body;
}

Body pipe(double cx, double cy, double top, double radius, double depth_extent, double cube) {
    Body body;
    body.cell_volume = cube * cube * cube;
    for (double d = cube / 2; d < depth_extent; d += cube)
        for (double a = -radius; a <= radius; a += cube)
            for (double b = -radius; b <= radius; b += cube)
                if (a * a + b * b <= radius * radius) {
                    body.x.push_back(cx + a + 0.3 * d);  // leans a little to the east with depth
                    body.y.push_back(cy + b);
                    body.z.push_back(top - d);
                }
    return body;
}

/// Total-field anomaly (nT) of a body of susceptibility `k` magnetised by induction in the field of
/// inclination and declination (degrees) and intensity (nT): each cube as a dipole.
double total_field(const Body& body, double k, double inclination, double declination, double intensity, double x,
                   double y, double z) {
    const double i = inclination * pi / 180, d = declination * pi / 180;
    const double tx = std::cos(i) * std::sin(d), ty = std::cos(i) * std::cos(d), tz = -std::sin(i);  // east, north, up
    const double moment = k * intensity * body.cell_volume / (4 * pi);
    double sum = 0;
    for (std::size_t n = 0; n < body.x.size(); ++n) {
        const double rx = x - body.x[n], ry = y - body.y[n], rz = z - body.z[n];
        const double r2 = rx * rx + ry * ry + rz * rz;
        const double r = std::sqrt(r2);
        const double cosine = (tx * rx + ty * ry + tz * rz) / r;
        sum += moment * (3 * cosine * cosine - 1) / (r2 * r);
    }
    return sum;
}

/// Vertical gravity (mGal, positive down) of a body of density contrast `contrast` (g/cc).
double vertical_gravity(const Body& body, double contrast, double x, double y, double z) {
    constexpr double g = 6.674e-11;
    const double mass = contrast * 1000 * body.cell_volume;
    double sum = 0;
    for (std::size_t n = 0; n < body.x.size(); ++n) {
        const double rx = x - body.x[n], ry = y - body.y[n], rz = z - body.z[n];
        const double r2 = rx * rx + ry * ry + rz * rz;
        sum += g * mass * rz / (r2 * std::sqrt(r2));
    }
    return sum * 1e5;  // m/s2 to mGal
}

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

/// Topography points every `spacing` metres over the area and one spacing round it, with a little
/// jitter as a real survey's points have.
void write_topography(const fs::path& file, const Terrain& terrain, double x_min, double x_max, double y_min,
                      double y_max, double spacing, Noise& noise) {
    std::vector<std::string> lines{"x,y,z"};
    for (double y = y_min - spacing; y <= y_max + spacing + 1e-6; y += spacing)
        for (double x = x_min - spacing; x <= x_max + spacing + 1e-6; x += spacing) {
            const double px = x + (noise.uniform() - 0.5) * spacing * 0.3;
            const double py = y + (noise.uniform() - 0.5) * spacing * 0.3;
            lines.push_back(fixed(px, 1) + "," + fixed(py, 1) + "," + fixed(terrain.at(px, py), 2));
        }
    invsetup::write_text_lines(file, lines);
}

/// A digital elevation model as an ESRI ASCII grid: nodes every `spacing` metres over the area and
/// `margin` metres round it (the mesh's padding), north row first, as a DEM is exported from any GIS.
void write_topography_grid(const fs::path& file, const Terrain& terrain, double x_min, double x_max, double y_min,
                           double y_max, double spacing, double margin) {
    const double west = x_min - margin, south = y_min - margin;
    const int columns = static_cast<int>(std::lround((x_max - x_min + 2 * margin) / spacing)) + 1;
    const int rows = static_cast<int>(std::lround((y_max - y_min + 2 * margin) / spacing)) + 1;
    std::vector<std::string> lines{"ncols " + std::to_string(columns), "nrows " + std::to_string(rows),
                                   "xllcenter " + fixed(west, 1), "yllcenter " + fixed(south, 1),
                                   "cellsize " + fixed(spacing, 1), "NODATA_value -9999"};
    for (int r = rows - 1; r >= 0; --r) {
        std::string line;
        for (int c = 0; c < columns; ++c) {
            if (c > 0) line += ' ';
            line += fixed(terrain.at(west + c * spacing, south + r * spacing), 2);
        }
        lines.push_back(line);
    }
    invsetup::write_text_lines(file, lines);
}

/// Flight lines running east-west `line_spacing` apart, readings every `step` metres, flown at
/// `clearance` above the ground with a wobble; columns x, y, z, value, line.
template <class Value>
void write_flight_lines(const fs::path& file, const Terrain& terrain, double x_min, double x_max, double y_min,
                        double y_max, double line_spacing, double step, double clearance, const char* value_name,
                        Noise& noise, Value value) {
    std::vector<std::string> lines{std::string("x,y,z,") + value_name + ",line"};
    int line_number = 1000;
    for (double y_line = y_min + line_spacing / 2; y_line < y_max; y_line += line_spacing, line_number += 10) {
        const bool eastward = (line_number / 10) % 2 == 0;
        double drift = 0;
        for (double s = 0; s <= x_max - x_min + 1e-6; s += step) {
            const double x = eastward ? x_min + s : x_max - s;
            drift = 0.97 * drift + noise.normal() * 1.5;  // the aircraft wanders off the line
            const double y = y_line + drift;
            const double z = terrain.at(x, y) + clearance + 8 * std::sin(s / 350.0) + noise.normal() * 2;
            lines.push_back(fixed(x, 1) + "," + fixed(y, 1) + "," + fixed(z, 1) + "," + fixed(value(x, y, z), 2) + "," +
                            std::to_string(line_number));
        }
    }
    invsetup::write_text_lines(file, lines);
}

/// The settings every example shares: a 4 km square core with 50 m cells, a 1 km uniform Z core of
/// 25 m cells with 8 growing cells below it, padding on, point data with a header line.
invsetup::InversionFields base_definition(double x0, double y0, double z_top) {
    invsetup::InversionFields d;
    d.refinement_mode = 0;
    d.mesh_min = {x0, y0, z_top - 1000, 0};
    d.mesh_max = {x0 + 4000, y0 + 4000, z_top, 0};
    d.mesh_cell_size = {50, 50, 25, 1.3};
    d.mesh_cell_count = {80, 80, 40, 8};
    d.add_mesh_padding = 1;
    d.use_expanded_mesh = 1;
    d.padding_multipliers = {"1,2,4,8", "1,2,4,8,16", ""};
    d.obs_data_file_type = 0;
    d.data_file_names[1] = "topo.xyz";
    d.data_first_lines = {2, 2};
    d.data_name_lines = {1, 1};
    d.data_read_steps = {1, 1};
    d.data_x_columns = {1, 1};
    d.data_y_columns = {2, 2};
    d.data_z_columns = {3, 3};
    d.data_value_columns = {4, 0, 0};
    d.line_column = 0;
    d.values_per_cell = 1;
    d.regional_base = 0;
    d.regional_scale = 1;
    d.sensor_height_type = 1;  // the files hold the sensor's elevation
    d.elevation_offsets = {0, 0, 0};
    d.topo_type = 0;
    d.topo_shift_option = 1;
    d.background_topo = -1e32f;
    d.rock_property_file = "";
    return d;
}

void make_magnetic(const fs::path& folder) {
    fs::create_directories(folder);
    const double x0 = 500000, y0 = 7000000;
    const Terrain terrain{x0, y0, 1010};
    Noise noise(20240611);
    write_topography(folder / "topo.xyz", terrain, x0, x0 + 4000, y0, y0 + 4000, 60, noise);
    const Body dyke = dipping_dyke(x0 + 1900, y0 + 2100, 940, 1600, 100, 500, 60, 25);
    write_flight_lines(folder / "mag_data.csv", terrain, x0, x0 + 4000, y0, y0 + 4000, 200, 20, 60, "tmi", noise,
                       [&](double x, double y, double z) {
                           const double regional = 0.004 * (x - x0) - 0.002 * (y - y0);
                           return total_field(dyke, 0.05, -62.5, 8.25, 57650, x, y, z) + regional + noise.normal() * 0.8;
                       });

    invsetup::InversionFields d = base_definition(x0, y0, 1200);
    d.inversion_method = invsetup::method_ubc_mag_v5;
    d.data_type_count = 1;
    d.data_types = {1, -1, -1, -1, -1, -1, -1};
    d.data_file_names[0] = "mag_data.csv";
    d.line_column = 5;  // the flight line numbers go into the reference set "mag.ref"
    d.mag_inclination = -62.5f;
    d.mag_declination = 8.25f;
    d.mag_intensity = 57650;
    d.error_percent = 2;
    d.error_floor = 1;
    invsetup::save_inversion_parameters(
        d,
        "Example magnetic inversion: UBC MAG3D V5 over a 4 x 4 km block.\r\n"
        "Observed data: mag_data.csv (x, y, sensor elevation, total field in nT, line), 200 m east-west lines.\r\n"
        "Topography: topo.xyz (x, y, z). A dipping dyke of susceptibility 0.05 SI lies 60 to 500 m below ground.",
        folder / "inversion.inp");
}

void make_zarninv(const fs::path& folder) {
    fs::create_directories(folder);
    const double x0 = 612000, y0 = 6451000;
    const Terrain terrain{x0, y0, 420};
    Noise noise(77001);
    write_topography(folder / "topo.xyz", terrain, x0, x0 + 4000, y0, y0 + 4000, 60, noise);
    const Body body = pipe(x0 + 2300, y0 + 1800, 330, 220, 600, 25);
    write_flight_lines(folder / "mag_data.csv", terrain, x0, x0 + 4000, y0, y0 + 4000, 250, 25, 80, "tmi", noise,
                       [&](double x, double y, double z) {
                           return total_field(body, 0.03, -65.0, 11.0, 58200, x, y, z) + noise.normal() * 0.6;
                       });

    // The in-house method hangs its Z limits from a top of 0 (the mesh is draped on the surface); the
    // file says so already, so a run saves it back unchanged.
    // Elevations are brought under that top by the sensor and topography offsets.
    invsetup::InversionFields d = base_definition(x0, y0, 0);
    d.elevation_offsets = {-600, -600, 0};
    d.inversion_method = invsetup::method_zarninv3d;
    d.data_type_count = 1;
    d.data_types = {1, -1, -1, -1, -1, -1, -1};
    d.data_file_names[0] = "mag_data.csv";
    d.mag_inclination = -65.0f;
    d.mag_declination = 11.0f;
    d.mag_intensity = 58200;
    d.error_percent = 0;
    d.error_floor = 1;
    invsetup::save_inversion_parameters(
        d,
        "Example magnetic inversion with Zarninv3D (total field, data type 1) over a 4 x 4 km block.\r\n"
        "Observed data: mag_data.csv, 250 m east-west lines. Topography: topo.xyz.\r\n"
        "A leaning pipe of susceptibility 0.03 SI lies 90 to 690 m below ground.\r\n"
        "The mesh top is 0 (the method's own datum): sensor and topography elevations are offset by -600 m.",
        folder / "inversion.inp");
}

void make_gravity(const fs::path& folder) {
    fs::create_directories(folder);
    const double x0 = 455000, y0 = 6220000;
    const Terrain terrain{x0, y0, 760};
    Noise noise(31337);
    write_topography_grid(folder / "topo.asc", terrain, x0, x0 + 4000, y0, y0 + 4000, 50, 1000);
    const Body body = pipe(x0 + 1700, y0 + 2300, 640, 300, 500, 25);
    std::vector<std::string> lines{"x,y,z,gz"};
    for (double y = y0 + 50; y < y0 + 4000; y += 100)
        for (double x = x0 + 50; x < x0 + 4000; x += 100) {
            const double px = x + (noise.uniform() - 0.5) * 40, py = y + (noise.uniform() - 0.5) * 40;
            const double pz = terrain.at(px, py) + 1.0;  // the meter stands on the ground
            const double regional = 0.0006 * (px - x0) + 0.0003 * (py - y0);
            const double gz = vertical_gravity(body, 0.35, px, py, pz) + regional + noise.normal() * 0.02;
            lines.push_back(fixed(px, 1) + "," + fixed(py, 1) + "," + fixed(pz, 2) + "," + fixed(gz, 3));
        }
    invsetup::write_text_lines(folder / "grav_data.csv", lines);

    invsetup::InversionFields d = base_definition(x0, y0, 950);
    d.inversion_method = invsetup::method_ubc_grav_v5;
    d.data_type_count = 1;
    d.data_types = {0, -1, -1, -1, -1, -1, -1};
    d.data_file_names[0] = "grav_data.csv";
    d.data_file_names[1] = "topo.asc";
    d.error_percent = 0;
    d.error_floor = 0.05f;
    invsetup::save_inversion_parameters(
        d,
        "Example gravity inversion: UBC GRAV3D V5, ground stations on a 100 m grid over a 4 x 4 km block.\r\n"
        "Observed data: grav_data.csv (x, y, elevation, gz in mGal). Topography: topo.asc, a 50 m DEM as an ESRI\r\n"
        "ASCII grid.\r\n"
        "A dense pipe (+0.35 g/cc) lies 100 to 600 m below ground.",
        folder / "inversion.inp");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const fs::path root = argc > 1 ? fs::path(argv[1]) : fs::path("examples");
        make_magnetic(root / "magnetic");
        make_zarninv(root / "zarninv");
        make_gravity(root / "gravity");
        std::printf("examples written under %s\n", root.string().c_str());
        return 0;
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "make_examples: %s\n", fault.what());
        return 1;
    }
}
