// src/grids/sidecar.cpp - reading the georeference of a raster picture from the file beside it.
#include "grids/sidecar.h"
#include "grids/lazy_library.h"

#include <gdal.h>
#include <cpl_error.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string_view>
#include <vector>

#include "support/files.h"

namespace invsetup {

namespace {

namespace fs = std::filesystem;

std::string to_upper_text(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return upper;
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

// A number that fills the whole text but for surrounding blanks; sign, point and exponent allowed.
bool read_number(std::string_view text, double& value) {
    text = trimmed(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return false;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    // A number too large for a double real reads as infinite, for the check of the whole sidecar to name.
    // (beyond the range, strtod gives the infinity of its sign, or 0 for a number too small).
    if (result.ec == std::errc::result_out_of_range && result.ptr == end) {
        value = std::strtod(std::string(text).c_str(), nullptr);
        return true;
    }
    return result.ec == std::errc() && result.ptr == end;
}

std::string number_text(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf or beyond a double real" : "inf or beyond a double real";
    std::ostringstream text;
    text << value;
    return text.str();
}

/// A georeference with a number that isn't finite places nothing: it is refused with the field named.
void refuse_infinite(SidecarGeoreference& result) {
    if (result.status < 0) return;
    const struct {
        const char* name;
        double value;
    } fields[] = {{"x origin", result.x_origin},         {"y origin", result.y_origin},
                  {"x pixel size", result.x_pixel_size}, {"y pixel size", result.y_pixel_size},
                  {"x minimum", result.x_min},           {"x maximum", result.x_max},
                  {"y minimum", result.y_min},           {"y maximum", result.y_max},
                  {"x reference pixel", result.x_reference_pixel}, {"y reference pixel", result.y_reference_pixel},
                  {"pixel column of x minimum", result.x_min_pixel}, {"pixel column of x maximum", result.x_max_pixel},
                  {"pixel row of y minimum", result.y_min_pixel},    {"pixel row of y maximum", result.y_max_pixel}};
    for (const auto& field : fields)
        if (!std::isfinite(field.value)) {
            result.status = -1;
            result.refusal = std::string("it gives the ") + field.name + " as " + number_text(field.value) +
                             ", not a finite number";
            return;
        }
}

// Sidecars come from every kind of system: lines may end in CR, LF or CR LF.
std::vector<std::string> read_lines(const std::string& name) {
    if (!not_a_regular_file(name).empty()) return {};  // a pipe or a device is no sidecar (find_sidecar_file skips them)
    std::ifstream in(name, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    const std::string text = content.str();
    std::vector<std::string> lines;
    std::string line;
    for (std::size_t k = 0; k < text.size(); ++k) {
        const char c = text[k];
        if (c == '\r' || c == '\n') {
            lines.push_back(line);
            line.clear();
            if (c == '\r' && k + 1 < text.size() && text[k + 1] == '\n') ++k;
        } else {
            line += c;
        }
    }
    if (!line.empty()) lines.push_back(line);
    return lines;
}

std::string_view cut_at_comment(std::string_view line) {
    const auto mark = line.find('!');
    return mark == std::string_view::npos ? line : line.substr(0, mark);
}

// "(x, y)" starting at `from`: both sides numeric. On success `from` moves past the ")".
bool read_bracket_pair(const std::string& line, std::size_t& from, double& first, double& second) {
    const auto open = line.find('(', from);
    if (open == std::string::npos) return false;
    const auto close = line.find(')', open);
    if (close == std::string::npos) return false;
    const std::string_view inside(line.data() + open + 1, close - open - 1);
    const auto comma = inside.find(',');
    if (comma == std::string_view::npos) return false;
    if (!read_number(inside.substr(0, comma), first) || !read_number(inside.substr(comma + 1), second)) return false;
    from = close + 1;
    return true;
}

// MapInfo .tab: control points "(x,y) (column,row) Label ..." up to the CoordSys line. The extremes
// of the map positions become the limits, each with the pixel position of its point.
void read_tab_file(const std::string& name, SidecarGeoreference& result) {
    struct ControlPoint {
        double x, y, column, row;
    };
    std::vector<ControlPoint> points;
    for (const std::string& line : read_lines(name)) {
        if (line.find("CoordSys") != std::string::npos) break;
        if (line.find('(') == std::string::npos) continue;
        if (points.size() == 4) break;
        ControlPoint point{};
        std::size_t from = 0;
        if (!read_bracket_pair(line, from, point.x, point.y) || !read_bracket_pair(line, from, point.column, point.row))
            break;
        points.push_back(point);
    }
    if (points.size() < 3) return;
    const ControlPoint& first = points.front();
    result.x_min = result.x_max = first.x;
    result.y_min = result.y_max = first.y;
    result.x_min_pixel = result.x_max_pixel = first.column;
    result.y_min_pixel = result.y_max_pixel = first.row;
    for (std::size_t k = 1; k < points.size(); ++k) {
        const ControlPoint& point = points[k];
        if (point.x < result.x_min) { result.x_min = point.x; result.x_min_pixel = point.column; }
        if (point.x > result.x_max) { result.x_max = point.x; result.x_max_pixel = point.column; }
        if (point.y < result.y_min) { result.y_min = point.y; result.y_min_pixel = point.row; }
        if (point.y > result.y_max) { result.y_max = point.y; result.y_max_pixel = point.row; }
    }
    if (result.x_min < -1e30 || result.x_max < -1e30 || result.y_min < -1e30 || result.y_max < -1e30) return;
    if (result.x_min > result.x_max) {
        std::swap(result.x_min, result.x_max);
        std::swap(result.x_min_pixel, result.x_max_pixel);
    }
    if (result.y_min > result.y_max) {
        std::swap(result.y_min, result.y_max);
        std::swap(result.y_min_pixel, result.y_max_pixel);
    }
    result.kind = SidecarKind::control_points;
    result.status = 0;
}

// The TIFF's own tags, and only those: a world file beside it is a sidecar of its own.
void read_tiff_tags(const std::string& name, SidecarGeoreference& result) {
    static std::once_flag once;
    std::call_once(once, [] { GDAL_CALL(GDALAllRegister)(); });
    GDAL_CALL(CPLPushErrorHandler)(GDAL_CALL(CPLQuietErrorHandler));
    const char* options[] = {"GEOREF_SOURCES=INTERNAL", nullptr};
    GDALDatasetH dataset = GDAL_CALL(GDALOpenEx)(name.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, options, nullptr);
    std::array<double, 6> transform{};
    const bool placed = dataset != nullptr && GDAL_CALL(GDALGetGeoTransform)(dataset, transform.data()) == CE_None;
    if (dataset != nullptr) GDAL_CALL(GDALClose)(dataset);
    GDAL_CALL(CPLPopErrorHandler)();
    if (!placed || transform[1] == 0.0 || transform[5] == 0.0) return;
    // Tags place the corner of the first pixel; a world file places its centre.
    result.x_pixel_size = transform[1];
    result.y_pixel_size = transform[5];
    result.x_origin = transform[0] + 0.5 * transform[1] + 0.5 * transform[2];
    result.y_origin = transform[3] + 0.5 * transform[4] + 0.5 * transform[5];
    result.kind = SidecarKind::tiff_tags;
    result.status = 0;
}

// .grf: five numbers, one to a non-blank line: x origin, y origin, x pixel size, a rotation taken
// as it comes, and the pixel height, which the file gives as a positive size and which becomes the
// (negative) y pixel size of a north-up picture.
void read_grf_file(const std::string& name, SidecarGeoreference& result) {
    std::array<double, 5> numbers{};
    std::size_t count = 0;
    for (const std::string& line : read_lines(name)) {
        if (trimmed(line).empty()) continue;
        if (!read_number(line, numbers[count])) return;
        if (++count == numbers.size()) break;
    }
    if (count < numbers.size()) return;
    result.x_origin = numbers[0];
    result.y_origin = numbers[1];
    result.x_pixel_size = numbers[2];
    result.y_pixel_size = -numbers[4];
    result.x_min = result.x_max = result.y_min = result.y_max = 0;
    result.kind = SidecarKind::grf;
    result.status = 0;
}

// .egb: "GEOREFERENCEIMAGE", then a "REGISTRATION" block of "name = value" lines (X ORIGIN,
// Y ORIGIN, X PIXEL SIZE, Y PIXEL SIZE, any case and spacing) and "Vertex" lines "Vertex = x, y" giving
// the map corners of the picture. The vertices give the limits; a rotation they imply isn't applied.
void read_egb_file(const std::string& name, SidecarGeoreference& result) {
    const std::vector<std::string> lines = read_lines(name);
    if (lines.empty() || to_upper_text(trimmed(lines.front())) != "GEOREFERENCEIMAGE") return;
    bool in_registration = false;
    bool have_x_origin = false, have_y_origin = false;
    double x_low = 1e300, x_high = -1e300, y_low = 1e300, y_high = -1e300;
    int vertices = 0;
    for (std::size_t k = 1; k < lines.size(); ++k) {
        const std::string line = to_upper_text(trimmed(lines[k]));
        if (line == "REGISTRATION") {
            in_registration = true;
            continue;
        }
        const auto equals = line.find('=');
        if (line.rfind("VERTEX", 0) == 0) {
            std::string_view value(line);
            value.remove_prefix(equals == std::string::npos ? 6 : equals + 1);
            std::string coordinates(value);
            std::replace(coordinates.begin(), coordinates.end(), ',', ' ');
            std::istringstream words(coordinates);
            double x = 0, y = 0;
            if (!(words >> x >> y)) return;
            x_low = std::min(x_low, x);
            x_high = std::max(x_high, x);
            y_low = std::min(y_low, y);
            y_high = std::max(y_high, y);
            ++vertices;
            continue;
        }
        if (!in_registration || equals == std::string::npos) continue;
        std::string key;
        for (char c : line.substr(0, equals))
            if (c != ' ' && c != '\t' && c != '_') key += c;
        double value = 0;
        if (!read_number(std::string_view(line).substr(equals + 1), value)) continue;
        if (key == "XORIGIN") { result.x_origin = value; have_x_origin = true; }
        else if (key == "YORIGIN") { result.y_origin = value; have_y_origin = true; }
        else if (key == "XPIXELSIZE") result.x_pixel_size = value;
        else if (key == "YPIXELSIZE") result.y_pixel_size = value;
    }
    if (!have_x_origin || !have_y_origin || result.x_pixel_size == 0 || result.y_pixel_size == 0) return;
    if (vertices > 0) {
        result.x_min = x_low;
        result.x_max = x_high;
        result.y_min = y_low;
        result.y_max = y_high;
    }
    result.kind = SidecarKind::egb;
    result.status = 0;
}

// ENVI header: "MAP INFO = {projection, ref column, ref row, x, y, x size, y size, ...}". A value
// that runs over several lines is joined up to its "}".
void read_envi_header(const std::vector<std::string>& lines, SidecarGeoreference& result) {
    std::string map_info;
    bool in_map_info = false;
    for (std::size_t k = 1; k < lines.size(); ++k) {
        std::string_view raw = trimmed(lines[k]);
        if (raw.empty() || raw.front() == '!') continue;
        const std::string line = to_upper_text(trimmed(cut_at_comment(raw)));
        if (in_map_info) {
            map_info += " " + line;
            if (line.find('}') != std::string::npos) break;
            continue;
        }
        const auto equals = line.find('=');
        if (equals == std::string::npos) continue;
        const std::string_view key = trimmed(std::string_view(line).substr(0, equals));
        const std::string_view value = trimmed(std::string_view(line).substr(equals + 1));
        double size = 0;
        if ((key == "SAMPLES" || key == "LINES") && !read_number(value, size)) return;
        if (key == "MAP INFO") {
            map_info = value;
            if (map_info.find('}') != std::string::npos) break;
            in_map_info = true;
        }
    }
    const auto brace = map_info.find('{');
    if (brace != std::string::npos) map_info.erase(0, brace + 1);
    const auto close = map_info.find('}');
    if (close != std::string::npos) map_info.erase(close);
    std::vector<std::string_view> tokens;
    std::string_view rest(map_info);
    for (;;) {
        const auto comma = rest.find(',');
        tokens.push_back(trimmed(rest.substr(0, comma)));
        if (comma == std::string_view::npos) break;
        rest.remove_prefix(comma + 1);
    }
    double* targets[] = {&result.x_reference_pixel, &result.y_reference_pixel, &result.x_origin,
                         &result.y_origin, &result.x_pixel_size, &result.y_pixel_size};
    for (std::size_t k = 1; k < tokens.size() && k <= 6; ++k) {
        double value = 0;
        if (!read_number(tokens[k], value)) break;
        *targets[k - 1] = value;
    }
    result.kind = SidecarKind::envi_header;
    result.status = 0;
}

// World file: six numbers on the first six non-blank lines (x size, two rotations, y size, x and y
// of the first pixel's centre), each line cut at a "!". The rotations aren't applied.
void read_world_file(const std::vector<std::string>& lines, SidecarGeoreference& result) {
    std::array<double, 6> numbers{};
    std::size_t count = 0;
    for (const std::string& line : lines) {
        const std::string_view value = trimmed(cut_at_comment(line));
        if (value.empty()) continue;
        if (!read_number(value, numbers[count])) return;
        if (++count == numbers.size()) break;
    }
    if (count < numbers.size()) return;
    result.x_pixel_size = numbers[0];
    result.y_pixel_size = numbers[3];
    result.x_origin = numbers[4];
    result.y_origin = numbers[5];
    result.kind = SidecarKind::world_file;
    result.status = 0;
}

std::string image_kind(const std::string& image_name) {
    std::string kind = to_upper_text(fs::path(image_name).extension().string());
    if (!kind.empty()) kind.erase(0, 1);
    if (kind == "JPEG") return "JPG";
    if (kind == "TIFF") return "TIF";
    return kind;
}

const std::vector<std::string>& sidecar_extensions(const std::string& kind) {
    static const std::vector<std::string> none;
    static const std::vector<std::pair<std::string, std::vector<std::string>>> table = {
        {"JPG", {".jpw", ".jgw", ".jpgw", ".tab", ".hdr", ".egb", ".grf"}},
        {"BMP", {".bpw", ".bmw", ".bmpw", ".tab", ".hdr", ".egb", ".grf"}},
        {"GIF", {".gfw", ".giw", ".gifw", ".tab", ".hdr", ".egb", ".grf"}},
        {"PNG", {".tab", ".hdr", ".egb"}},
        {"TIF", {".tfw", ".tiw", ".tifw", ".tiffw", ".tab", ".hdr", ".grf", ".egb"}},
        {"TGA", {".tgw", ".tgaw", ".tab", ".hdr", ".egb", ".grf"}},
    };
    for (const auto& [name, extensions] : table)
        if (name == kind) return extensions;
    return none;
}

// Sidecars written on other systems often carry upper-case extensions.
bool exists_in_some_case(const fs::path& candidate, std::string& found) {
    std::error_code error;
    if (fs::is_regular_file(candidate, error)) {
        found = candidate.string();
        return true;
    }
    fs::path upper = candidate;
    upper.replace_extension(to_upper_text(candidate.extension().string()));
    if (upper != candidate && fs::is_regular_file(upper, error)) {
        found = upper.string();
        return true;
    }
    return false;
}

}  // namespace

std::string find_sidecar_file(const std::string& image_name) {
    if (image_name.empty()) return "";
    const fs::path image(image_name);
    std::string found;
    if (exists_in_some_case(fs::path(image_name + "w"), found)) return found;
    const fs::path rebuilt = image.parent_path() / (image.filename().string() + "w");
    if (exists_in_some_case(rebuilt, found)) return found;
    const fs::path base = image.parent_path() / image.stem();
    for (const std::string& extension : sidecar_extensions(image_kind(image_name)))
        if (exists_in_some_case(fs::path(base.string() + extension), found)) return found;
    return "";
}

SidecarGeoreference read_sidecar_file(const std::string& sidecar_name) {
    SidecarGeoreference result;
    std::error_code error;
    if (sidecar_name.empty() || !fs::is_regular_file(sidecar_name, error)) return result;
    const std::string kind = image_kind(sidecar_name);
    if (kind == "TAB") {
        read_tab_file(sidecar_name, result);
    } else if (kind == "TIF") {
        read_tiff_tags(sidecar_name, result);
    } else if (kind == "GRF") {
        read_grf_file(sidecar_name, result);
    } else if (kind == "EGB") {
        read_egb_file(sidecar_name, result);
    } else {
        const std::vector<std::string> lines = read_lines(sidecar_name);
        if (!lines.empty() && to_upper_text(lines.front()).find("ENVI") != std::string::npos)
            read_envi_header(lines, result);
        else
            read_world_file(lines, result);
    }
    refuse_infinite(result);
    return result;
}

bool georeference_limits(const SidecarGeoreference& georeference, int width, int height, double& x_min,
                         double& x_max, double& y_min, double& y_max, double& x_spacing, double& y_spacing) {
    if (georeference.status < 0 || width < 1 || height < 1) return false;
    // x and y of the centres of the first and last pixel columns and rows.
    double x_first = 0, x_last = 0, y_first = 0, y_last = 0;
    switch (georeference.kind) {
    case SidecarKind::world_file:
    case SidecarKind::tiff_tags:
    case SidecarKind::grf:
    case SidecarKind::egb:
        if (georeference.x_pixel_size == 0 || georeference.y_pixel_size == 0) return false;
        x_first = georeference.x_origin;
        x_last = x_first + (width - 1) * georeference.x_pixel_size;
        y_first = georeference.y_origin;
        y_last = y_first + (height - 1) * georeference.y_pixel_size;
        break;
    case SidecarKind::envi_header: {
        if (georeference.x_pixel_size == 0 || georeference.y_pixel_size == 0) return false;
        // The reference pixel counts from 1 at the picture's top-left corner; y runs down the rows.
        const double column_shift = 0.5 - (georeference.x_reference_pixel - 1);
        const double row_shift = 0.5 - (georeference.y_reference_pixel - 1);
        x_first = georeference.x_origin + column_shift * georeference.x_pixel_size;
        x_last = georeference.x_origin + (width - 1 + column_shift) * georeference.x_pixel_size;
        y_first = georeference.y_origin - row_shift * georeference.y_pixel_size;
        y_last = georeference.y_origin - (height - 1 + row_shift) * georeference.y_pixel_size;
        break;
    }
    case SidecarKind::control_points: {
        // Control point pixels are measured from the picture's top-left corner, so a pixel's centre
        // sits half a pixel in.
        const double column_span = georeference.x_max_pixel - georeference.x_min_pixel;
        const double row_span = georeference.y_max_pixel - georeference.y_min_pixel;
        if (column_span == 0 || row_span == 0) return false;
        const double x_size = (georeference.x_max - georeference.x_min) / column_span;
        const double y_size = (georeference.y_max - georeference.y_min) / row_span;
        x_first = georeference.x_min + (0.5 - georeference.x_min_pixel) * x_size;
        x_last = georeference.x_min + (width - 0.5 - georeference.x_min_pixel) * x_size;
        y_first = georeference.y_min + (0.5 - georeference.y_min_pixel) * y_size;
        y_last = georeference.y_min + (height - 0.5 - georeference.y_min_pixel) * y_size;
        break;
    }
    case SidecarKind::none:
        return false;
    }
    x_min = std::min(x_first, x_last);
    x_max = std::max(x_first, x_last);
    y_min = std::min(y_first, y_last);
    y_max = std::max(y_first, y_last);
    x_spacing = width > 1 ? (x_max - x_min) / (width - 1) : std::abs(georeference.x_pixel_size);
    y_spacing = height > 1 ? (y_max - y_min) / (height - 1) : std::abs(georeference.y_pixel_size);
    // A pixel size or origin too large for a number ("inf", "1e309") places nothing.
    for (const double value : {x_min, x_max, y_min, y_max, x_spacing, y_spacing})
        if (!std::isfinite(value)) return false;
    return x_spacing > 0 && y_spacing > 0;
}

}  // namespace invsetup
