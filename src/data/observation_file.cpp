// src/data/observation_file.cpp - observation file writing: a counting pass without formatting, then
// one formatted line per reading, built in a fixed buffer.
#include "data/observation_file.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "session.h"
#include "support/lines.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

constexpr std::size_t field_width = static_cast<std::size_t>(observation_field_width);
constexpr std::size_t fixed4_capacity = 400;  // the longest double by "0.0000" has 309 + 6 characters

/// Right-justifies `text` into the field at `out`; a longer text keeps its first 14 characters.
char* put_field(char* out, std::string_view text) {
    if (text.size() >= field_width) {
        std::memcpy(out, text.data(), field_width);
    } else {
        const std::size_t pad = field_width - text.size();
        std::memset(out, ' ', pad);
        std::memcpy(out + pad, text.data(), text.size());
    }
    return out + field_width;
}

char* put_number(char* out, double value) {
    char text[fixed4_capacity];
    return put_field(out, std::string_view(text, format_fixed4(value, text)));
}

/// A value, or "*" in the last place of its field when it is null.
char* put_value(char* out, double value) { return is_null(value) ? put_field(out, "*") : put_number(out, value); }

/// The readings of one line of the file.
struct ObservationLine {
    double x, y, z;
    double value[3];
    double extra;
    const std::string* label;
};

class DataLineWriter {
public:
    DataLineWriter(const InversionDefinition& d, int with_extras)
        : type_count_(d.data_type_count < 1 ? 1 : (d.data_type_count > 3 ? 3 : d.data_type_count)),
          percent_(d.error_percent),
          floor_(d.error_floor),
          with_label_(with_extras == 1 && d.line_column > 0),
          with_extra_(with_extras == 1 && d.extra_value_column > 0) {}

    std::string_view format(const ObservationLine& reading) {
        char* p = buffer_;
        p = put_number(p, reading.x);
        p = put_number(p, reading.y);
        p = put_number(p, reading.z);
        for (int t = 0; t < type_count_; ++t) {
            const double v = reading.value[t];
            p = put_value(p, v);
            p = put_number(p, is_null(v) ? 0.0 : std::fabs(v) * percent_ / 100 + floor_);
        }
        if (with_label_) p = put_field(p, *reading.label);
        if (with_extra_) p = put_number(p, reading.extra);
        return std::string_view(buffer_, static_cast<std::size_t>(p - buffer_));
    }

private:
    int type_count_;
    double percent_;
    double floor_;
    bool with_label_;
    bool with_extra_;
    char buffer_[11 * field_width];
};

/// Walks the list in file order with the selection of the columns and the limit per cell, from a
/// fresh bin_count, and calls `take(k)` for each reading chosen. Returns the number chosen.
template <class Take>
int walk_list(Session& session, int x_first, int x_end, int y_first, int y_end, Take take) {
    const ObservationList& list = session.readings;
    ObservationBins& bins = session.bins;
    const int limit = session.definition.values_per_cell;
    bins.bin_count.assign(session.mesh.nx, session.mesh.ny, 0);
    int chosen = 0;
    for (int k = 1; k <= list.obs_count; ++k) {
        const int i = list.obs_cells(k, 1);
        const int j = list.obs_cells(k, 2);
        if (i < x_first || i >= x_end || j < y_first || j >= y_end) continue;
        int& in_cell = bins.bin_count(i, j);
        if (limit != 0 && in_cell >= limit) continue;
        ++in_cell;
        ++chosen;
        take(k);
    }
    return chosen;
}

bool has_header(const InversionDefinition& d) {
    const int method = d.inversion_method;
    if (method != 0 && method != 3 && method != 4 && method != 6) return false;
    const int type = d.data_types[0];
    // The in-house method's gravity data types have no field lines.
    return !(method == method_zarninv3d && type > -1 && type != 1 && type < 20);
}

}  // namespace

std::size_t format_fixed4(double value, char* out) {
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    static constexpr std::uint64_t whole_powers[] = {1ULL,
                                                     10ULL,
                                                     100ULL,
                                                     1000ULL,
                                                     10000ULL,
                                                     100000ULL,
                                                     1000000ULL,
                                                     10000000ULL,
                                                     100000000ULL,
                                                     1000000000ULL,
                                                     10000000000ULL,
                                                     100000000000ULL,
                                                     1000000000000ULL,
                                                     10000000000000ULL,
                                                     100000000000000ULL,
                                                     1000000000000000ULL,
                                                     10000000000000000ULL,
                                                     100000000000000000ULL,
                                                     1000000000000000000ULL};
    static constexpr double decades[] = {1e-8, 1e-7, 1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1,
                                         1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11};
    const double magnitude = std::fabs(value);
    std::uint64_t units = 0;  // the value in units of 0.0001, rounded as the picture rounds
    bool fast = false;
    if (magnitude < 1e-8) {
        fast = true;  // nothing reaches the fourth decimal
    } else if (magnitude < 1e11) {
        // The fifteen significant digits of the value, as an integer D with value = D * 10^(e - 14).
        // The product is exact as scaled + error; a product near a half is left to the general path.
        // The decimal exponent from the binary one (log10 of 2 is about 1233 / 4096), set right by
        // one comparison; a decade missed shows as digits out of range below.
        int e = (std::ilogb(magnitude) * 1233) >> 12;
        if (e + 1 >= -8 && e + 1 <= 11 && magnitude >= decades[e + 1 + 8]) ++e;
        const int shift = 14 - e;
        if (shift >= 4 && shift <= 22) {
            const double scaled = magnitude * powers[shift];
            const double error = std::fma(magnitude, powers[shift], -scaled);
            const double rounded = std::nearbyint(scaled);
            const double fraction = (scaled - rounded) + error;
            if (std::fabs(fraction) < 0.49 && rounded >= 1e14 && rounded < 1e15) {
                const auto digits = static_cast<std::uint64_t>(rounded);
                const std::uint64_t drop = whole_powers[10 - e];  // digits below the fourth decimal
                units = digits / drop;
                if ((digits % drop) * 2 >= drop) ++units;  // half away from zero on the decimal digits
                fast = true;
            }
        }
    }
    if (!fast) return format_picture_to(out, fixed4_capacity, value, "0.0000");

    char digits[24];
    int n = 0;
    std::uint64_t rest = units;
    do {
        digits[n++] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest > 0 || n < 5);  // at least one digit before the point
    std::size_t length = 0;
    if (value < 0 && units > 0) out[length++] = '-';
    for (int k = n - 1; k >= 4; --k) out[length++] = digits[k];
    out[length++] = '.';
    for (int k = 3; k >= 0; --k) out[length++] = digits[k];
    return length;
}

int write_inversion_data(Session& session, int with_extras, const std::filesystem::path& file_name, int x_first,
                         int x_end, int y_first, int y_end, int /*use_expanded*/, int& written) {
    try {
        const InversionDefinition& d = session.definition;
        const ObservationBins& bins = session.bins;
        const ObservationList& list = session.readings;

        int count = 0;
        for (int j = y_first; j < y_end; ++j)
            for (int i = x_first; i < x_end; ++i)
                if (bins.bin_used(i, j) > 0) ++count;
        const bool from_list = count > 0 && d.values_per_cell != 1 && list.obs_count > 0;
        if (from_list) count = walk_list(session, x_first, x_end, y_first, y_end, [](int) {});
        if (count == 0) return 0;

        LineWriter out(file_name);
        if (has_header(d)) {
            const float declination = d.mag_declination;
            const bool turned = d.coordinate_transform.active;
            const double turned_declination = static_cast<double>(d.mag_declination) + d.coordinate_transform.angle;
            const std::string inclination_text = format_picture(d.mag_inclination, "0.00");
            const std::string declination_text =
                turned ? format_picture(turned_declination, "0.00") : format_picture(declination, "0.00");
            out.write_line(inclination_text + " " + declination_text + " " +
                           format_picture(d.mag_intensity, "0.00"));
            out.write_line(inclination_text + " " + declination_text + " 1");
        }
        std::string count_line = " ";  // built by appends: GCC 12 warns falsely on " " + text
        count_line += std::to_string(count);
        count_line += ' ';
        out.write_line(count_line);

        DataLineWriter lines(d, with_extras);
        written = 0;
        ProgressMeter progress(session.dialogue, count);
        // A percent of a large file spans many lines: look at it every 1024th line then.
        const int check_every = count < 102400 ? 1 : 1024;
        int next_check = 0;
        auto emit = [&](const ObservationLine& reading) {
            out.write_line(lines.format(reading));
            ++written;
            if (written < next_check) return;
            next_check = written + check_every;
            progress.advance(written - 1);
        };
        static const std::string no_label;
        if (from_list) {
            walk_list(session, x_first, x_end, y_first, y_end, [&](int k) {
                emit({list.obs_values(1, k),
                      list.obs_values(2, k),
                      list.obs_values(3, k),
                      {list.obs_values(4, k), list.obs_values(5, k), list.obs_values(6, k)},
                      list.obs_values(7, k),
                      list.obs_labels.size() >= k ? &list.obs_label(k) : &no_label});
            });
        } else {
            for (int j = y_first; j < y_end; ++j)
                for (int i = x_first; i < x_end; ++i)
                    if (bins.bin_used(i, j) > 0)
                        emit({bins.bin_x(i, j),
                              bins.bin_y(i, j),
                              bins.bin_z(i, j),
                              {bins.bin_value1(i, j), bins.bin_value2(i, j), bins.bin_value3(i, j)},
                              bins.bin_extra(i, j),
                              &bins.bin_label(i, j)});
        }
        out.close();
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while writing the observation file " + file_name.string() +
                                     ": " + fault.what());
        return -1;
    }
}

}  // namespace invsetup
