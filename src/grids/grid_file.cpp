// src/grids/grid_file.cpp - grid headers, windows and statistics over GDAL; height files by hand.
#include "grids/grid_file.h"
#include "grids/lazy_library.h"

#include <gdal.h>
#include <cpl_conv.h>
#include <cpl_error.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <regex>
#include <string_view>
#include <vector>

#include "support/files.h"
#include "support/memory.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

// Surfer marks blank nodes with 1.70141e38; no real grid value comes near it.
constexpr float blanking_threshold = 1.0e38f;

void register_gdal_drivers() {
    static std::once_flag once;
    std::call_once(once, [] { GDAL_CALL(GDALAllRegister)(); });
}

// GDAL reports through a process-wide handler; grid faults are ours to report, so nothing reaches
// the screen. Its failures are kept: when a read then fails they say why.
class QuietGdalErrors {
public:
    QuietGdalErrors() { GDAL_CALL(CPLPushErrorHandlerEx)(&QuietGdalErrors::keep, this); }
    ~QuietGdalErrors() { GDAL_CALL(CPLPopErrorHandler)(); }
    QuietGdalErrors(const QuietGdalErrors&) = delete;
    QuietGdalErrors& operator=(const QuietGdalErrors&) = delete;
    /// GDAL's failures while this stood, "; " between them; "" when there were none.
    const std::string& failures() const { return failures_; }

private:
    static void CPL_STDCALL keep(CPLErr kind, CPLErrorNum, const char* text) {
        auto* self = static_cast<QuietGdalErrors*>(GDAL_CALL(CPLGetErrorHandlerUserData)());
        if (!self || kind < CE_Failure || !text || self->failures_.size() > 600) return;
        if (!self->failures_.empty()) self->failures_ += "; ";
        self->failures_ += text;
    }
    std::string failures_;
};

std::string upper_extension(const std::string& name) {
    std::string extension = std::filesystem::path(name).extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return extension;
}

bool is_height_file(const std::string& name) { return upper_extension(name) == "HGT"; }

// The fields of one line of a text table, split at commas, semicolons, blanks and tabs.
std::vector<std::string_view> table_fields(std::string_view line) {
    std::vector<std::string_view> fields;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= line.size(); ++i)
        if (i == line.size() || line[i] == ',' || line[i] == ';' || line[i] == ' ' || line[i] == '\t' ||
            line[i] == '\r') {
            if (i > start) fields.push_back(line.substr(start, i - start));
            start = i + 1;
        }
    return fields;
}

bool is_number_field(std::string_view field) {
    double value = 0;
    const char* first = field.data() + (field.front() == '+' ? 1 : 0);
    const auto [end, error] = std::from_chars(first, field.data() + field.size(), value);
    return error == std::errc() && end == field.data() + field.size();
}

// Whether the file is a plain table of points: at most one line of column names, then lines that all
// hold the same number (two or more) of numbers, and no header file beside it that could make a
// raster of it. Such a file is a point file whatever else GDAL might make of it (its XYZ reader takes
// a regular one as a raster), so it is known as one without loading GDAL's hundred-odd libraries: a
// run on point files never pays for them. Anything else is left to GDAL.
bool is_plain_point_table(const std::string& name) {
    static constexpr const char* header_files[] = {".hdr", ".HDR", ".aux", ".aux.xml", ".rsc", ".xml", ".ers", ".rdc"};
    const std::filesystem::path path(name);
    std::error_code error;
    for (const char* header : header_files) {
        if (std::filesystem::exists(name + header, error)) return false;
        std::filesystem::path beside = path;
        if (std::filesystem::exists(beside.replace_extension(header), error)) return false;
    }
    std::ifstream file(path, std::ios::binary);
    std::string head(8192, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    const bool whole_file = file.eof();
    std::size_t line_start = 0, number_lines = 0, fields_per_line = 0;
    bool first_line = true;
    while (line_start < head.size()) {
        const std::size_t line_end = head.find('\n', line_start);
        if (line_end == std::string::npos && !whole_file) break;  // a line cut by the sample
        const std::string_view line(head.data() + line_start,
                                    (line_end == std::string::npos ? head.size() : line_end) - line_start);
        line_start = line_end == std::string::npos ? head.size() : line_end + 1;
        const std::vector<std::string_view> fields = table_fields(line);
        if (fields.empty()) continue;
        const bool numbers = std::all_of(fields.begin(), fields.end(), is_number_field);
        if (!numbers) {
            // Only a first line of two or more names; a lone word ("DSAA") or "ncols 100" is a grid's header.
            if (!first_line || fields.size() < 2 ||
                std::any_of(fields.begin(), fields.end(), is_number_field))
                return false;
        } else {
            if (fields.size() < 2 || (fields_per_line != 0 && fields.size() != fields_per_line)) return false;
            fields_per_line = fields.size();
            ++number_lines;
        }
        first_line = false;
    }
    return number_lines >= 2;
}

// The file as a grid: its size, placement and null, and a way to read rows of it. Rows come in
// the file's own order (north first for the usual north-up grid); nulls already -1e32.
class GridSource {
public:
    bool open(const std::string& name, const std::vector<std::string>& open_options) {
        if (!not_a_regular_file(name).empty()) return false;  // GDAL would read a pipe forever
        if (is_height_file(name)) return open_height_file(name);
        return open_gdal(name, open_options);
    }

    int columns = 0;
    int rows = 0;
    int bands = 0;
    bool north_up = true;  // first file row is the northern one
    bool has_null = false;
    double file_null = 0;
    double x_first = 0, y_first = 0;  // centre of the first pixel of the first file row
    double x_spacing = 0, y_spacing = 0;  // both positive
    int kind = grid_kind_gdal;
    std::string description;
    std::string driver_name;  // GDAL's short name; "HGT" for a height file
    std::string failure;      // what GDAL said when opening or reading failed

    /// Fills grid_ints and grid_reals for the columns c0..c1 and south-based rows r0..r1 (0-based).
    void fill_header(GridHeader& header, int c0, int c1, int r0, int r1) const {
        header.grid_ints.assign(grid_int_count, 0);
        header.grid_reals.assign(grid_real_count, 0.0);
        header.grid_ints[grid_int::kind] = kind;
        header.grid_ints[grid_int::sub_kind] = 1;
        header.grid_ints[grid_int::bands] = bands;
        header.grid_ints[grid_int::has_null] = has_null ? 1 : 0;
        header.grid_ints[grid_int::raster_width] = c1 - c0 + 1;
        header.grid_ints[grid_int::columns] = c1 - c0 + 1;
        header.grid_ints[grid_int::rows] = r1 - r0 + 1;
        header.grid_reals[grid_real::x_min] = x_first + c0 * x_spacing;
        header.grid_reals[grid_real::x_max] = x_first + c1 * x_spacing;
        header.grid_reals[grid_real::y_min] = south_y() + r0 * y_spacing;
        header.grid_reals[grid_real::y_max] = south_y() + r1 * y_spacing;
        header.grid_reals[grid_real::x_spacing] = x_spacing;
        header.grid_reals[grid_real::y_spacing] = y_spacing;
        header.grid_reals[grid_real::file_null] = has_null ? file_null : 0.0;
        header.grid_text = description.substr(0, grid_text_length);
    }

    double south_y() const { return north_up ? y_first - (rows - 1) * y_spacing : y_first; }
    int file_row(int south_row) const { return north_up ? rows - 1 - south_row : south_row; }

    /// Reads `count` columns from `column` of `row_count` file rows from `first_row` into `out`.
    bool read_rows(int column, int count, int first_row, int row_count, float* out) {
        bool ok = dataset_ ? read_gdal_rows(column, count, first_row, row_count, out)
                           : read_height_rows(column, count, first_row, row_count, out);
        if (!ok) return false;
        const std::size_t total = static_cast<std::size_t>(count) * static_cast<std::size_t>(row_count);
        const float null_as_read = static_cast<float>(file_null);
        for (std::size_t k = 0; k < total; ++k) {
            float& value = out[k];
            if (std::isnan(value) || value > blanking_threshold || value < -1e30f ||
                (has_null && value == null_as_read))
                value = null_value_single;
        }
        return true;
    }

private:
    struct DatasetCloser {
        void operator()(void* dataset) const { GDAL_CALL(GDALClose)(static_cast<GDALDatasetH>(dataset)); }
    };
    std::unique_ptr<void, DatasetCloser> dataset_;
    std::ifstream height_file_;

    bool open_gdal(const std::string& name, const std::vector<std::string>& open_options) {
        register_gdal_drivers();
        QuietGdalErrors quiet;
        std::vector<const char*> options;
        for (const std::string& option : open_options) options.push_back(option.c_str());
        options.push_back(nullptr);
        GDALDatasetH handle = GDAL_CALL(GDALOpenEx)(name.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, options.data(), nullptr);
        if (handle == nullptr) {
            failure = quiet.failures();
            return false;
        }
        dataset_.reset(handle);
        bands = GDAL_CALL(GDALGetRasterCount)(handle);
        columns = GDAL_CALL(GDALGetRasterXSize)(handle);
        rows = GDAL_CALL(GDALGetRasterYSize)(handle);
        if (bands < 1 || columns < 1 || rows < 1) return false;
        double transform[6] = {0, 1, 0, 0, 0, 1};
        GDAL_CALL(GDALGetGeoTransform)(handle, transform);  // without one GDAL leaves pixel numbers
        if (transform[2] != 0.0 || transform[4] != 0.0) return false;  // rotated grids aren't read
        if (transform[1] <= 0.0 || transform[5] == 0.0) return false;
        x_spacing = transform[1];
        y_spacing = std::abs(transform[5]);
        north_up = transform[5] < 0;
        // GDAL places a pixel by its corner; a grid node is the pixel's centre.
        x_first = transform[0] + 0.5 * transform[1];
        y_first = transform[3] + 0.5 * transform[5];
        int null_given = 0;
        double null = GDAL_CALL(GDALGetRasterNoDataValue)(GDAL_CALL(GDALGetRasterBand)(handle, 1), &null_given);
        has_null = null_given != 0;
        file_null = has_null ? null : 0.0;
        GDALDriverH driver = GDAL_CALL(GDALGetDatasetDriver)(handle);
        description = driver ? GDAL_CALL(GDALGetDriverLongName)(driver) : "";
        driver_name = driver ? GDAL_CALL(GDALGetDriverShortName)(driver) : "";
        return true;
    }

    bool read_gdal_rows(int column, int count, int first_row, int row_count, float* out) {
        QuietGdalErrors quiet;
        GDALRasterBandH band = GDAL_CALL(GDALGetRasterBand)(static_cast<GDALDatasetH>(dataset_.get()), 1);
        const bool read = GDAL_CALL(GDALRasterIO)(band, GF_Read, column, first_row, count, row_count, out, count,
                                                  row_count, GDT_Float32, 0, 0) == CE_None;
        if (!read) failure = quiet.failures();
        return read;
    }

    // A height file is a square of big-endian 16-bit integers, north row first, named by its
    // south-west corner in whole degrees ("S34E151.hgt"); -32768 marks a void.
    bool open_height_file(const std::string& name) {
        static const std::regex corner_pattern(R"(^([NSns])(\d{1,2})([EWew])(\d{1,3}))");
        std::smatch corner;
        const std::string base = std::filesystem::path(name).stem().string();
        if (!std::regex_search(base, corner, corner_pattern)) return false;
        double south = std::stod(corner[2].str());
        double west = std::stod(corner[4].str());
        if (corner[1].str() == "S" || corner[1].str() == "s") south = -south;
        if (corner[3].str() == "W" || corner[3].str() == "w") west = -west;
        std::error_code error;
        const auto bytes = std::filesystem::file_size(name, error);
        if (error || bytes < 8 || bytes % 2 != 0) return false;
        const double side = std::sqrt(static_cast<double>(bytes / 2));
        const int size = to_integer(side);
        if (static_cast<std::uintmax_t>(size) * static_cast<std::uintmax_t>(size) * 2 != bytes) return false;
        height_file_.open(name, std::ios::binary);
        if (!height_file_) return false;
        kind = grid_kind_height;
        bands = 1;
        columns = rows = size;
        x_spacing = y_spacing = 1.0 / (size - 1);
        north_up = true;
        x_first = west;
        y_first = south + 1.0;
        has_null = true;
        file_null = -32768.0;
        description = "Height file";
        driver_name = "HGT";
        return true;
    }

    bool read_height_rows(int column, int count, int first_row, int row_count, float* out) {
        std::vector<unsigned char> row_bytes(static_cast<std::size_t>(count) * 2);
        for (int r = 0; r < row_count; ++r) {
            const std::streamoff offset =
                (static_cast<std::streamoff>(first_row + r) * columns + column) * 2;
            height_file_.seekg(offset);
            if (!height_file_.read(reinterpret_cast<char*>(row_bytes.data()), static_cast<std::streamsize>(row_bytes.size())))
                return false;
            float* row_out = out + static_cast<std::size_t>(r) * static_cast<std::size_t>(count);
            for (int c = 0; c < count; ++c) {
                const auto high = static_cast<std::uint16_t>(row_bytes[2 * static_cast<std::size_t>(c)]);
                const auto low = static_cast<std::uint16_t>(row_bytes[2 * static_cast<std::size_t>(c) + 1]);
                row_out[c] = static_cast<float>(static_cast<std::int16_t>(static_cast<std::uint16_t>(high << 8 | low)));
            }
        }
        return true;
    }
};

// First and last node index (0-based) of the nodes covering low..high along an axis of `count`
// nodes from `first` at `spacing`; false when the range misses the axis. A hair of tolerance keeps
// a limit that sits on a node (up to rounding) from pulling in the node beyond it.
bool covering_nodes(double low, double high, double first, double spacing, int count, int& from, int& to) {
    const double tolerance = 1e-9;
    const double low_position = (low - first) / spacing;
    const double high_position = (high - first) / spacing;
    if (!(high_position >= -tolerance && low_position <= (count - 1) + tolerance)) return false;
    from = to_integer(std::floor(std::clamp(low_position + tolerance, 0.0, count - 1.0)));
    to = to_integer(std::ceil(std::clamp(high_position - tolerance, 0.0, count - 1.0)));
    return from <= to;
}

void accumulate(const float* values, std::size_t count, GridStatistics& statistics, double& shift, double& sum,
                double& sum_of_squares) {
    for (std::size_t k = 0; k < count; ++k) {
        const float value = values[k];
        if (value < -1e30f) {
            ++statistics.null_count;
            continue;
        }
        // Sums are taken about the first value so that large map elevations keep their digits.
        if (statistics.present_count == 0) {
            shift = value;
            statistics.minimum = statistics.maximum = value;
        }
        ++statistics.present_count;
        const double offset = value - shift;
        sum += offset;
        sum_of_squares += offset * offset;
        statistics.minimum = std::min<double>(statistics.minimum, value);
        statistics.maximum = std::max<double>(statistics.maximum, value);
    }
}

void finish_statistics(GridStatistics& statistics, double shift, double sum, double sum_of_squares, int& status) {
    if (statistics.present_count == 0) {
        status = -1;
        return;
    }
    const auto count = static_cast<double>(statistics.present_count);
    const double mean_offset = sum / count;
    statistics.mean = shift + mean_offset;
    statistics.standard_deviation = std::sqrt(std::max(0.0, sum_of_squares / count - mean_offset * mean_offset));
    status = 0;
}

}  // namespace

float GridWindow::value(int column, int row) const {
    const int columns = header.columns();
    if (column < 1 || column > columns || row < 1 || row > header.rows())
        throw std::out_of_range("grid node (" + std::to_string(column) + ", " + std::to_string(row) + ") outside the grid");
    return values.at(static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(columns) + static_cast<std::size_t>(column - 1));
}

bool is_valid_grid_header(const Array1<int>& grid_ints, const Array1<double>& grid_reals) {
    return grid_ints[grid_int::kind] >= 1 && grid_ints[grid_int::columns] > 0 && grid_ints[grid_int::rows] > 0 &&
           grid_reals[grid_real::x_min] < grid_reals[grid_real::x_max] &&
           grid_reals[grid_real::y_min] < grid_reals[grid_real::y_max] && grid_reals[grid_real::x_spacing] > 0 &&
           grid_reals[grid_real::y_spacing] > 0;
}

bool is_grid_file(const std::string& name) {
    // GDAL opens a text file of x, y, z rows on a regular spacing as a raster ("XYZ"), and a table
    // of columns through its CSV reader; both are lists of points whose columns the person defines.
    static constexpr const char* point_drivers[] = {"XYZ", "CSV"};
    std::error_code error;
    if (!std::filesystem::is_regular_file(name, error)) return false;
    if (is_plain_point_table(name)) return false;
    GridSource source;
    if (!source.open(name, {})) return false;
    for (const char* points : point_drivers)
        if (source.driver_name == points) return false;
    GridHeader header;
    source.fill_header(header, 0, source.columns - 1, 0, source.rows - 1);
    return is_valid_grid_header(header.grid_ints, header.grid_reals);
}

std::string grid_format_name(const std::string& name) {
    if (is_height_file(name)) return "HGT";
    register_gdal_drivers();
    QuietGdalErrors quiet;
    GDALDriverH driver = GDAL_CALL(GDALIdentifyDriver)(name.c_str(), nullptr);
    if (driver == nullptr) return "";
    return GDAL_CALL(GDALGetDriverShortName)(driver);
}

std::string grid_size_refusal(const std::string& name, const std::string& driver_name, int file_columns, int file_rows,
                              int columns, int rows) {
    const double file_values = static_cast<double>(file_columns) * file_rows;
    // A text grid writes each value out: a digit and a separator at least.
    static const char* const text_formats[] = {"AAIGrid", "GSAG", "XYZ", "GRASSASCIIGrid", "ISG"};
    const bool text = std::find(std::begin(text_formats), std::end(text_formats), driver_name) != std::end(text_formats);
    std::error_code error;
    const double bytes = static_cast<double>(std::filesystem::file_size(name, error));
    if (text && !error && file_values > std::floor((bytes + 1) / 2))
        return "the grid file " + name + " claims " + count_text(file_columns) + " x " + count_text(file_rows) +
               " values, but its " + count_text(bytes) + " bytes can hold at most " +
               count_text(std::floor((bytes + 1) / 2)) + ": its header is wrong, or the file is damaged";
    const double needed = static_cast<double>(columns) * rows * sizeof(float);
    const double available = available_memory_bytes();
    if (available > 0 && needed > available / 2)
        return "the part of the grid file " + name + " to read has " + count_text(columns) + " x " + count_text(rows) +
               " values, " + bytes_text(needed) + "; " + bytes_text(available) + " is available";
    return "";
}

void GRDRDH(const std::string& name, Array1<int>& grid_ints, Array1<double>& grid_reals, std::string& grid_text,
            int& status) {
    status = -1;
    grid_ints.assign(grid_int_count, 0);
    grid_reals.assign(grid_real_count, 0.0);
    grid_text.clear();
    GridSource source;
    if (!source.open(name, {})) return;
    GridHeader header;
    source.fill_header(header, 0, source.columns - 1, 0, source.rows - 1);
    grid_ints = header.grid_ints;
    grid_reals = header.grid_reals;
    grid_text = header.grid_text;
    status = 0;
}

void GRDRDGD(const std::string& input_name, GridWindow& output, double x_min, double x_max, double /*x_step*/,
             double y_min, double y_max, double /*y_step*/, int& status, const std::vector<std::string>& open_options) {
    status = -1;
    output.header = GridHeader{};
    output.values.clear();
    GridSource source;
    if (!source.open(input_name, open_options)) {
        output.failure = source.failure;
        return;
    }
    int c0 = 0, c1 = 0, r0 = 0, r1 = 0;
    if (!covering_nodes(x_min, x_max, source.x_first, source.x_spacing, source.columns, c0, c1)) return;
    if (!covering_nodes(y_min, y_max, source.south_y(), source.y_spacing, source.rows, r0, r1)) return;
    const int columns = c1 - c0 + 1;
    const int rows = r1 - r0 + 1;
    output.failure = grid_size_refusal(input_name, source.driver_name, source.columns, source.rows, columns, rows);
    if (!output.failure.empty()) return;
    output.values.resize(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    const int first_file_row = std::min(source.file_row(r0), source.file_row(r1));
    if (!source.read_rows(c0, columns, first_file_row, rows, output.values.data())) {
        output.values.clear();
        output.failure = source.failure;
        return;
    }
    if (source.north_up) {  // the window keeps its rows from the south
        for (int r = 0; r < rows / 2; ++r) {
            auto top = output.values.begin() + static_cast<std::ptrdiff_t>(r) * columns;
            auto bottom = output.values.begin() + static_cast<std::ptrdiff_t>(rows - 1 - r) * columns;
            std::swap_ranges(top, top + columns, bottom);
        }
    }
    source.fill_header(output.header, c0, c1, r0, r1);
    status = 0;
}

void GRDSTAT(const std::string& name, GridStatistics& statistics, int& status) {
    statistics = GridStatistics{};
    status = -1;
    GridSource source;
    if (!source.open(name, {})) return;
    const int block_rows = std::max(1, std::min(source.rows, (1 << 20) / source.columns));
    std::vector<float> block(static_cast<std::size_t>(block_rows) * static_cast<std::size_t>(source.columns));
    double shift = 0, sum = 0, sum_of_squares = 0;
    for (int row = 0; row < source.rows; row += block_rows) {
        const int count = std::min(block_rows, source.rows - row);
        if (!source.read_rows(0, source.columns, row, count, block.data())) return;
        accumulate(block.data(), static_cast<std::size_t>(count) * static_cast<std::size_t>(source.columns), statistics,
                   shift, sum, sum_of_squares);
    }
    finish_statistics(statistics, shift, sum, sum_of_squares, status);
}

void GRDSTAT(const GridWindow& grid, GridStatistics& statistics, int& status) {
    statistics = GridStatistics{};
    double shift = 0, sum = 0, sum_of_squares = 0;
    accumulate(grid.values.data(), grid.values.size(), statistics, shift, sum, sum_of_squares);
    finish_statistics(statistics, shift, sum, sum_of_squares, status);
}

void GRDHST(const GridWindow& grid, int bin_count, std::vector<std::int64_t>& counts, double& minimum, double& maximum,
            int& status) {
    counts.assign(static_cast<std::size_t>(std::max(bin_count, 0)), 0);
    GridStatistics statistics;
    GRDSTAT(grid, statistics, status);
    if (status < 0 || bin_count < 1) {
        status = -1;
        return;
    }
    minimum = statistics.minimum;
    maximum = statistics.maximum;
    const double width = (maximum - minimum) / bin_count;
    for (float value : grid.values) {
        if (value < -1e30f) continue;
        int bin = width > 0 ? to_integer(std::floor((value - minimum) / width)) : 0;
        counts[static_cast<std::size_t>(std::clamp(bin, 0, bin_count - 1))] += 1;
    }
}

// The value at a point is the bilinear blend of the four nodes of the grid cell that holds it:
//   v = (1-tx)(1-ty) v(i,j) + tx (1-ty) v(i+1,j) + (1-tx) ty v(i,j+1) + tx ty v(i+1,j+1),
// with tx, ty the point's fractional position inside the cell. A point on the grid's east or north
// edge belongs to the last cell (tx or ty is 1), so the edge nodes are reached exactly. The point is
// null when it lies outside the nodes (beyond a rounding hair), or when any node that surrounds it
// is null. A point on a grid line is surrounded by the two nodes of its segment, and a point on a
// node by that node alone (the others have weight 0): a mesh aligned with the grid samples the
// nodes themselves, and a hole in the grid beyond a node mustn't blank the node. A grid of a single
// column or row is read along its line only.
void GEO_CELL_INTERPOLATION(const GridWindow& grid, std::span<const double> x, std::span<const double> y,
                            std::span<double> values) {
    const std::size_t count = std::min({x.size(), y.size(), values.size()});
    const int columns = grid.header.columns();
    const int rows = grid.header.rows();
    if (grid.values.size() != static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows) || columns < 1 ||
        rows < 1) {
        std::fill(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count), null_value);
        return;
    }
    const double x_min = grid.header.x_min(), y_min = grid.header.y_min();
    const double x_spacing = grid.header.x_spacing(), y_spacing = grid.header.y_spacing();
    const double tolerance = 1e-9;
    const float* nodes = grid.values.data();
    for (std::size_t k = 0; k < count; ++k) {
        const double fx = (x[k] - x_min) / x_spacing;
        const double fy = (y[k] - y_min) / y_spacing;
        // Written so that a NaN coordinate fails the test too.
        if (!(fx >= -tolerance && fx <= (columns - 1) + tolerance && fy >= -tolerance && fy <= (rows - 1) + tolerance)) {
            values[k] = null_value;
            continue;
        }
        const int i = std::clamp(to_integer(std::floor(fx)), 0, std::max(columns - 2, 0));
        const int j = std::clamp(to_integer(std::floor(fy)), 0, std::max(rows - 2, 0));
        const int i1 = std::min(i + 1, columns - 1);
        const int j1 = std::min(j + 1, rows - 1);
        const double tx = i1 > i ? std::clamp(fx - i, 0.0, 1.0) : 0.0;
        const double ty = j1 > j ? std::clamp(fy - j, 0.0, 1.0) : 0.0;
        const std::size_t row0 = static_cast<std::size_t>(j) * static_cast<std::size_t>(columns);
        const std::size_t row1 = static_cast<std::size_t>(j1) * static_cast<std::size_t>(columns);
        const float v00 = nodes[row0 + static_cast<std::size_t>(i)];
        const float v10 = nodes[row0 + static_cast<std::size_t>(i1)];
        const float v01 = nodes[row1 + static_cast<std::size_t>(i)];
        const float v11 = nodes[row1 + static_cast<std::size_t>(i1)];
        const double w00 = (1 - tx) * (1 - ty), w10 = tx * (1 - ty), w01 = (1 - tx) * ty, w11 = tx * ty;
        if ((w00 > 0 && v00 < -1e30f) || (w10 > 0 && v10 < -1e30f) || (w01 > 0 && v01 < -1e30f) ||
            (w11 > 0 && v11 < -1e30f)) {
            values[k] = null_value;
            continue;
        }
        // A null node of weight 0 is left out of the sum rather than multiplied by 0.
        double value = 0;
        if (w00 > 0) value += w00 * v00;
        if (w10 > 0) value += w10 * v10;
        if (w01 > 0) value += w01 * v01;
        if (w11 > 0) value += w11 * v11;
        values[k] = value;
    }
}

void GEO_CELL_INTERPOLATION(const GridWindow& grid, const Array1<double>& x, const Array1<double>& y, int count,
                            Array1<double>& values) {
    if (count > x.size() || count > y.size() || count > values.size() || count < 0)
        throw std::out_of_range("GEO_CELL_INTERPOLATION: " + std::to_string(count) + " points for rows of " +
                                std::to_string(values.size()));
    const auto n = static_cast<std::size_t>(count);
    GEO_CELL_INTERPOLATION(grid, std::span<const double>(x.data(), n), std::span<const double>(y.data(), n),
                           std::span<double>(values.data(), n));
}

}  // namespace invsetup
