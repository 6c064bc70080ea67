// src/data/location_file.cpp - the point file reader: one scan of the file per pass, lines cut in a
// reused buffer, fields as views, numbers parsed in place; nothing is allocated per reading.
#include "data/location_file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <unordered_map>

#include "session.h"
#include "support/files.h"
#include "support/memory.h"
#include "support/text.h"

namespace invsetup {

namespace {

/// Lines of a file, read in large blocks. A line ends at CR LF, LF or a lone CR; the views stay
/// valid until the next call. A UTF-8 byte order mark at the start is dropped.
class BlockLines {
public:
    explicit BlockLines(const std::filesystem::path& path) : file_(std::fopen(path.string().c_str(), "rb")) {
        if (file_) buffer_.resize(block_size);
    }
    ~BlockLines() {
        if (file_) std::fclose(file_);
    }
    BlockLines(const BlockLines&) = delete;
    BlockLines& operator=(const BlockLines&) = delete;

    bool is_open() const { return file_ != nullptr; }

    bool next(std::string_view& line) {
        for (;;) {
            const char* base = buffer_.data();
            const char* begin = base + begin_;
            const char* end = base + end_;
            const char* stop = find_line_end(begin, end);
            if (stop != end) {
                // A CR at the end of the block may be the first half of CR LF: read on first.
                if (*stop == '\r' && stop + 1 == end && !at_eof_) {
                    refill();
                    continue;
                }
                line = std::string_view(begin, static_cast<std::size_t>(stop - begin));
                std::size_t next = static_cast<std::size_t>(stop - base) + 1;
                if (*stop == '\r' && next < end_ && base[next] == '\n') ++next;
                begin_ = next;
                return true;
            }
            if (at_eof_) {
                if (begin_ == end_) return false;
                line = std::string_view(begin, static_cast<std::size_t>(end - begin));
                begin_ = end_;
                return true;
            }
            refill();
        }
    }

private:
    static constexpr std::size_t block_size = 1 << 20;

    static const char* find_line_end(const char* begin, const char* end) {
        const std::size_t size = static_cast<std::size_t>(end - begin);
        const void* lf = std::memchr(begin, '\n', size);
        const char* limit = lf ? static_cast<const char*>(lf) : end;
        const void* cr = std::memchr(begin, '\r', static_cast<std::size_t>(limit - begin));
        return cr ? static_cast<const char*>(cr) : limit;
    }

    /// Keeps the unfinished line, moves it to the front and reads the next block behind it; a line
    /// longer than the buffer makes the buffer grow.
    void refill() {
        const std::size_t rest = end_ - begin_;
        if (begin_ > 0 && rest > 0) std::memmove(buffer_.data(), buffer_.data() + begin_, rest);
        begin_ = 0;
        end_ = rest;
        if (buffer_.size() - end_ < block_size / 2) buffer_.resize(buffer_.size() * 2);
        const std::size_t got = std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, file_);
        if (got == 0) {
            if (std::ferror(file_)) throw std::runtime_error("the file could not be read");
            at_eof_ = true;
        }
        if (first_block_) {
            first_block_ = false;
            if (got >= 3 && std::memcmp(buffer_.data(), "\xEF\xBB\xBF", 3) == 0) begin_ = 3;
        }
        end_ += got;
    }

    std::FILE* file_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool at_eof_ = false;
    bool first_block_ = true;
};

bool is_blank(char c) { return c == ' ' || c == '\t'; }
inline bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

inline std::string_view trim_view(std::string_view text) {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && is_blank(text[begin])) ++begin;
    while (end > begin && is_blank(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

/// The whole trimmed field as a number, by the rules of is_numeric: sign, digits with one point,
/// an exponent E or D with an optional sign. False when the field is anything else. Without
/// `convert` only the form is checked and `value` is left alone.
/// Up to 15 digits and a decimal exponent within 22 the value is the digits times or divided by an
/// exact power of ten: one rounding, the same double that from_chars gives, at a fraction of its cost.
template <bool convert>
bool parse_field_number(std::string_view field, double& value) {
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const std::string_view text = trim_view(field);
    const char* p = text.data();
    const char* const end = p + text.size();
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-')) negative = *p++ == '-';
    const char* const body = p;
    std::uint64_t mantissa = 0;
    while (p < end && *p == '0') ++p;  // leading zeros carry no significance
    const char* first = p;
    for (; p < end && is_digit(*p); ++p) mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
    std::ptrdiff_t significant = p - first;
    std::ptrdiff_t digits = p - body;
    std::ptrdiff_t decimals = 0;
    if (p < end && *p == '.') {
        const char* const fraction = ++p;
        if (mantissa == 0)
            while (p < end && *p == '0') ++p;
        first = p;
        for (; p < end && is_digit(*p); ++p) mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
        significant += p - first;
        decimals = p - fraction;
        digits += decimals;
    }
    if (digits == 0) return false;
    int exponent = 0;
    bool d_exponent = false;
    if (p < end) {
        const char e = *p;
        if (e != 'E' && e != 'e' && e != 'D' && e != 'd') return false;
        d_exponent = e == 'D' || e == 'd';
        ++p;
        bool exponent_negative = false;
        if (p < end && (*p == '+' || *p == '-')) exponent_negative = *p++ == '-';
        if (p >= end || !is_digit(*p)) return false;
        for (; p < end && is_digit(*p); ++p)
            if (exponent < 100000) exponent = exponent * 10 + (*p - '0');
        if (p != end) return false;
        if (exponent_negative) exponent = -exponent;
    }
    if constexpr (convert) {
        const std::ptrdiff_t scale = exponent - decimals;
        if (significant <= 15 && scale >= -22 && scale <= 22) {
            const double whole = static_cast<double>(mantissa);
            value = scale < 0 ? whole / powers[-scale] : whole * powers[scale];
        } else if (d_exponent) {  // from_chars knows only E
            value = std::fabs(parse_number_prefix(text));
        } else {
            const auto result = std::from_chars(body, end, value);
            if (result.ec != std::errc()) value = std::fabs(parse_number_prefix(text));  // out of range
        }
        if (negative) value = -value;
    }
    return true;
}

/// Roles a column can play, in the order they are decoded when one column plays several.
enum Role : unsigned {
    role_x = 1u << 0,
    role_y = 1u << 1,
    role_z = 1u << 2,
    role_value1 = 1u << 3,
    role_value2 = 1u << 4,
    role_value3 = 1u << 5,
    role_line = 1u << 6,
    role_label = 1u << 7,
    role_extra = 1u << 8,
};

/// Hash of texts that also looks up views, so that a label is only copied when it is new.
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

/// One pass over a text file.
class LocationPass {
public:
    /// With a sink the filling pass hands each reading to it and leaves `data` alone.
    LocationPass(const LocationFileSettings& settings, int mode, LocationData& data, LocationSummary& summary,
                 LocationSink* sink = nullptr)
        : settings_(settings), mode_(mode), data_(data), summary_(summary), sink_(sink) {
        const int columns[] = {settings.x_column,        settings.y_column,        settings.z_column,
                               settings.value_columns[0], settings.value_columns[1], settings.value_columns[2],
                               settings.line_column,     settings.label_column,    settings.extra_value_column};
        for (int column : columns) maximum_column_ = std::max(maximum_column_, column);
        roles_.assign(static_cast<std::size_t>(maximum_column_) + 1, 0u);
        for (int r = 0; r < 9; ++r)
            if (columns[r] > 0) roles_[static_cast<std::size_t>(columns[r])] |= 1u << r;
        fields_.resize(static_cast<std::size_t>(maximum_column_));
        step_ = std::max(settings.read_step, 1);
        // Without ranges, limits or densifying a reading is counted by the form of its fields alone.
        count_only_ = mode == location_count_pass && !settings.keep_ranges && !settings.has_limits &&
                      !(settings.integration_interval > 0);
        transform_on_ = settings.transform.active;
        if (mode_ == location_fill_pass && !sink_) {
            capacity_ = data.locations.rows();
            locations_ = data.locations.data();
            values_ = data.values.data();
        }
    }

    void run(BlockLines& lines, Dialogue& dialogue) {
        std::string_view line;
        for (int skipped = 1; skipped < settings_.first_line; ++skipped)
            if (!lines.next(line)) return finish();
        long long line_number = 0;
        while (lines.next(line)) {
            if ((line_number++ % step_) != 0) continue;
            if ((line_number & 0xFFFF) == 0) dialogue.do_events();
            if (trim_view(line).empty()) continue;
            file_line_ = std::max(settings_.first_line, 1) - 1 + line_number;
            take_line(line);
        }
        finish();
    }

private:
    /// Cuts the line into fields: at commas when it holds one (trimmed, quotes honoured), otherwise
    /// into blank-separated words; maximum_column fields at most.
    int split(std::string_view line) {
        if (maximum_column_ == 0) return 0;
        const char* const begin = line.data();
        const char* const end = begin + line.size();
        int count = 0;
        if (std::memchr(begin, ',', line.size()) != nullptr) {
            const char* start = begin;
            for (const char* p = begin;; ++p) {
                if (p == end || *p == ',') {
                    fields_[static_cast<std::size_t>(count++)] =
                        trim_view(std::string_view(start, static_cast<std::size_t>(p - start)));
                    if (p == end || count == maximum_column_) return count;
                    start = p + 1;
                } else if (*p == '"') {  // quotes are rare: the general splitter takes the line
                    quoted_ = split_fields(line, maximum_column_);
                    count = 0;
                    for (const std::string& field : quoted_) fields_[static_cast<std::size_t>(count++)] = field;
                    return count;
                }
            }
        }
        std::string_view rest = line;
        for (; count < maximum_column_; ++count) fields_[static_cast<std::size_t>(count)] = next_word(rest);
        return count;
    }

    /// Decodes the fields in column order; false ends the record at a field that must be a number.
    void decode(int field_count) {
        for (int k = 1; k <= field_count; ++k) {
            const unsigned roles = roles_[static_cast<std::size_t>(k)];
            if (roles == 0) continue;
            const std::string_view field = fields_[static_cast<std::size_t>(k - 1)];
            double number = 0;
            if (roles & (role_x | role_y | role_z | role_value1 | role_value2 | role_value3)) {
                // To count, x and y are read (a null x or y makes no reading); the rest need only their form.
                if (count_only_ && !(roles & (role_x | role_y))) {
                    if (!parse_field_number<false>(field, number)) return;
                } else if (!parse_field_number<true>(field, number)) {
                    return;
                }
                if (roles & role_x) x_ = number;
                if (roles & role_y) y_ = number;
                if (roles & role_z) {
                    z_ = settings_.z_sign_flag == 1 ? -number : number;
                    z_ += settings_.elevation_offset;
                }
                // The files keep values as single reals: one beyond them is no value (a null, counted as one).
                const float value = std::fabs(number) <= std::numeric_limits<float>::max() ? static_cast<float>(number)
                                                                                          : null_value_single;
                if (roles & role_value1) value_[0] = value;
                if (roles & role_value2) value_[1] = value;
                if (roles & role_value3) value_[2] = value;
            }
            if (roles & role_line) take_line_name(trim_view(field));
            if (roles & role_label) {
                label_ = trim_view(field);
                if (label_.empty()) label_ = "NA";
            }
            if (roles & role_extra) extra_ = parse_number_prefix(trim_view(field));
        }
    }

    void take_line_name(std::string_view name) {
        if (name.empty()) name = "NA";
        if (line_count_ > 0 && name == line_name_) return;
        line_name_.assign(name);
        ++line_count_;
        if (sink_) {
            sink_->begin_line(line_count_, line_name_);
        } else if (mode_ == location_fill_pass) {
            data_.line_names[line_count_] = line_name_;
            data_.line_starts[line_count_] = count_ + 1;
        }
    }

    void take_line(std::string_view line) {
        x_ = null_value;
        y_ = null_value;
        z_ = settings_.z_column > 0 ? null_value : static_cast<double>(settings_.elevation_offset);
        value_ = {null_value_single, null_value_single, null_value_single};
        extra_ = 0;
        label_ = "NA";
        decode(split(line));
        if (is_null(x_) || is_null(y_)) return;
        if (count_only_) {
            add_to_count(1);
            return;
        }

        if (transform_on_) apply_point_transform(settings_.transform, map_to_local, x_, y_, z_);
        if (settings_.has_limits &&
            (x_ < settings_.x_min || x_ > settings_.x_max || y_ < settings_.y_min || y_ > settings_.y_max))
            return;

        if (settings_.integration_interval > 0 && has_previous_ && previous_line_ == line_count_) densify();
        add_to_count(1);
        ++readings_;
        for (int c = 0; c < 3; ++c) {
            if (is_null(value_[static_cast<std::size_t>(c)])) continue;
            summary_.value_sum[static_cast<std::size_t>(c)] += value_[static_cast<std::size_t>(c)];
            ++summary_.value_count[static_cast<std::size_t>(c)];
        }
        if (mode_ == location_count_pass)
            keep_range();
        else
            store(x_, y_, z_);
        has_previous_ = true;
        previous_line_ = line_count_;
        previous_x_ = x_;
        previous_y_ = y_;
        previous_z_ = z_;
    }

    /// Adds evenly spaced points between the previous reading and this one when they lie further
    /// apart than the integration interval; they carry this reading's values and label.
    void densify() {
        const double interval = settings_.integration_interval;
        const double east = x_ - previous_x_, north = y_ - previous_y_;
        const double d = std::sqrt(east * east + north * north);
        if (!(d > interval)) return;
        // A gap that would fill memory is a fault in the coordinates or the interval, not a survey:
        // beyond a million points, more than a hundred per reading read so far are refused.
        const double allowed = densify_floor + densify_per_reading * (readings_ + 1.0) - added_;
        const double steps = d / interval;
        if (!(steps < allowed + 2)) throw_gap_too_wide(d);
        int n = to_integer(steps);
        if (d - interval / 10 > n * interval) ++n;
        if (n < 2) return;
        if (n - 1 > allowed) throw_gap_too_wide(d);
        added_ += n - 1;
        if (mode_ != location_fill_pass) {
            add_to_count(n - 1);
            return;
        }
        const bool z_known = !is_null(z_) && !is_null(previous_z_);
        for (int m = 1; m < n; ++m) {
            const double t = static_cast<double>(m) / n;
            add_to_count(1);
            store(previous_x_ + (x_ - previous_x_) * t, previous_y_ + (y_ - previous_y_) * t,
                  z_known ? previous_z_ + (z_ - previous_z_) * t : null_value);
        }
    }

    [[noreturn]] void throw_gap_too_wide(double d) const {
        throw std::runtime_error("The reading on line " + std::to_string(file_line_) + " lies " +
                                 format_picture(d, "0.0") +
                                 " from the one before it on its line: filling that gap at the integration "
                                 "interval of " +
                                 trim(number_to_text(settings_.integration_interval)) +
                                 " would add more points than the survey can hold. Check the x and y columns "
                                 "and the integration interval.");
    }

    void add_to_count(int n) {
        if (count_ > std::numeric_limits<int>::max() - n)
            throw std::runtime_error("The file holds more than " + std::to_string(std::numeric_limits<int>::max()) +
                                     " readings.");
        count_ += n;
    }

    void keep_range() {
        auto low = [](auto& minimum, auto value) {
            if (is_null(minimum) || value < minimum) minimum = value;
        };
        auto high = [](auto& maximum, auto value) {
            if (is_null(maximum) || value > maximum) maximum = value;
        };
        low(summary_.x_min, x_);
        high(summary_.x_max, x_);
        low(summary_.y_min, y_);
        high(summary_.y_max, y_);
        if (!is_null(z_)) {
            low(summary_.z_min, static_cast<float>(z_));
            high(summary_.z_max, static_cast<float>(z_));
        }
        for (std::size_t c = 0; c < 3; ++c) {
            if (is_null(value_[c])) continue;
            low(summary_.value_min[c], value_[c]);
            high(summary_.value_max[c], value_[c]);
        }
    }

    void store(double x, double y, double z) {
        if (sink_) {
            LocationRecord record;
            record.x = x;
            record.y = y;
            record.z = z;
            record.values = value_;
            record.extra = extra_;
            record.line = line_count_;
            record.label = label_;
            sink_->take(record);
            return;
        }
        if (count_ > capacity_)
            throw std::runtime_error(
                "The file holds more readings than when it was counted: it changed while it was read.");
        const std::size_t n = static_cast<std::size_t>(count_ - 1);
        locations_[n * 3] = x;
        locations_[n * 3 + 1] = y;
        locations_[n * 3 + 2] = z;
        values_[n * 3] = value_[0];
        values_[n * 3 + 1] = value_[1];
        values_[n * 3 + 2] = value_[2];
        data_.line_index.data()[n] = line_count_;
        if (settings_.extra_value_column > 0) data_.extra_values.data()[n] = extra_;
        if (settings_.label_column > 0) {
            auto found = label_ids_.find(label_);
            if (found == label_ids_.end())
                found = label_ids_.emplace(std::string(label_), static_cast<int>(label_ids_.size()) + 1).first;
            data_.label_index.data()[n] = found->second;
        }
    }

    void finish() {
        for (std::size_t c = 0; c < 3; ++c)
            summary_.value_mean[c] =
                summary_.value_count[c] > 0 ? summary_.value_sum[c] / summary_.value_count[c] : 0.0;
        if (mode_ == location_count_pass) {
            require_memory();
            data_ = LocationData{};
            data_.count = count_;
            data_.line_count = line_count_;
            if (count_ > 0) {
                data_.locations.assign(count_, 3, 0.0);
                data_.values.assign(count_, 3, null_value_single);
                data_.line_index.assign(count_, 0);
                if (settings_.extra_value_column > 0) data_.extra_values.assign(count_, 0.0);
                if (settings_.label_column > 0) data_.label_index.assign(count_, 0);
            }
            data_.line_names.assign(line_count_);
            data_.line_starts.assign(line_count_ + 1, count_ + 1);
            return;
        }
        if (sink_) {
            data_.count = count_;
            return;
        }
        if (count_ != capacity_ || line_count_ != data_.line_names.size())
            throw std::runtime_error("The file changed between its two readings.");
        data_.count = count_;
        data_.line_starts[line_count_ + 1] = count_ + 1;
        if (settings_.label_column > 0) sort_labels();
    }

    /// The tables of the filling pass must fit in the memory the system can give now.
    void require_memory() const {
        const double per_reading = 3 * sizeof(double) + 3 * sizeof(float) + sizeof(int) +
                                   (settings_.extra_value_column > 0 ? sizeof(double) : 0) +
                                   (settings_.label_column > 0 ? sizeof(int) : 0);
        const double bytes = per_reading * count_;
        const double available = available_memory_bytes();
        if (available > 0 && bytes > available)
            throw std::runtime_error("The file holds " + count_text(count_) + " readings" +
                                     (added_ > 0 ? " with the points densifying adds" : "") + ", " +
                                     bytes_text(bytes) + "; " + bytes_text(available) + " is available.");
    }

    /// Labels in sorted order, each once; every reading keeps the index of its label there.
    void sort_labels() {
        std::vector<std::pair<std::string_view, int>> order;
        order.reserve(label_ids_.size());
        for (const auto& [label, id] : label_ids_) order.emplace_back(label, id);
        std::sort(order.begin(), order.end());
        std::vector<int> place(order.size() + 1, 0);
        data_.label_names.assign(static_cast<int>(order.size()));
        for (std::size_t k = 0; k < order.size(); ++k) {
            data_.label_names[static_cast<int>(k) + 1] = std::string(order[k].first);
            place[static_cast<std::size_t>(order[k].second)] = static_cast<int>(k) + 1;
        }
        for (int& index : data_.label_index) index = place[static_cast<std::size_t>(index)];
    }

    const LocationFileSettings& settings_;
    const int mode_;
    LocationData& data_;
    LocationSummary& summary_;
    LocationSink* const sink_;

    int maximum_column_ = 0;
    std::vector<unsigned> roles_;
    std::vector<std::string_view> fields_;
    std::vector<std::string> quoted_;
    int step_ = 1;
    bool count_only_ = false;
    bool transform_on_ = false;

    int capacity_ = 0;
    double* locations_ = nullptr;
    float* values_ = nullptr;

    int count_ = 0;
    int line_count_ = 0;
    std::string line_name_;
    std::unordered_map<std::string, int, TextHash, std::equal_to<>> label_ids_;

    // The record being decoded.
    double x_ = 0, y_ = 0, z_ = 0;
    std::array<float, 3> value_{};
    double extra_ = 0;
    std::string_view label_;

    bool has_previous_ = false;
    int previous_line_ = 0;
    long long file_line_ = 0;
    double readings_ = 0, added_ = 0;
    static constexpr double densify_floor = 1e6, densify_per_reading = 100;
    double previous_x_ = 0, previous_y_ = 0, previous_z_ = 0;
};

}  // namespace

namespace {

/// One pass of either kind, with the reader's messages for what stops it.
int read_pass(Dialogue& dialogue, const LocationFileSettings& settings, int mode, LocationData& data,
              LocationSummary& summary, LocationSink* sink) {
    const std::string file_name = settings.file.string();
    try {
        summary.value_sum = {};
        summary.value_count = {};
        summary.value_mean = {};
        if (mode == location_count_pass) summary = LocationSummary{};
        if (settings.file_kind == location_kind_database) {
            dialogue.message_box("The database could not be opened\n" + file_name +
                                         "\nGeosoft databases can only be read with Geosoft's own libraries: export "
                                         "the database to a CSV or XYZ file and select that file instead.");
            return -1;
        }
        require_regular_file(settings.file, "data file");
        BlockLines lines(settings.file);
        if (!lines.is_open()) {
            dialogue.message_box("The data file could not be opened: " + file_name);
            return -1;
        }
        LocationPass pass(settings, mode, data, summary, sink);
        pass.run(lines, dialogue);
        return 0;
    } catch (const std::exception& fault) {
        dialogue.message_box("An error occurred while reading the data file " + file_name + ": " +
                             fault_reason_text(fault));
        return -1;
    }
}

}  // namespace

int read_locations_file(Dialogue& dialogue, const LocationFileSettings& settings, int mode, LocationData& data,
                        LocationSummary& summary) {
    return read_pass(dialogue, settings, mode, data, summary, nullptr);
}

int stream_locations_file(Dialogue& dialogue, const LocationFileSettings& settings, LocationSink& sink, int& count,
                          LocationSummary& summary) {
    // The counting pass's summary is wanted too (the sums and means of the values).
    summary = LocationSummary{};
    LocationData counted;
    count = 0;
    const int status = read_pass(dialogue, settings, location_fill_pass, counted, summary, &sink);
    count = counted.count;
    return status;
}

int read_locations_file(Session& session, const LocationFileSettings& settings, int mode, LocationData& data,
                        LocationSummary& summary) {
    return read_locations_file(session.dialogue, settings, mode, data, summary);
}

int load_locations_file(Dialogue& dialogue, const LocationFileSettings& settings, LocationData& data,
                        LocationSummary& summary) {
    if (read_locations_file(dialogue, settings, location_count_pass, data, summary) < 0) return -1;
    if (data.count == 0) return 0;
    return read_locations_file(dialogue, settings, location_fill_pass, data, summary);
}

int load_locations_file(Session& session, const LocationFileSettings& settings, LocationData& data,
                        LocationSummary& summary) {
    return load_locations_file(session.dialogue, settings, data, summary);
}

}  // namespace invsetup
