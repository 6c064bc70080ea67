// src/modelfiles/model_file_write.cpp - model files in the UBC text form and the binary form.
#include "modelfiles/model_file_write.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "support/dialogue.h"
#include "support/numbers.h"

namespace invsetup {

static_assert(std::endian::native == std::endian::little, "the binary model form is little-endian");

void ModelValues::size(int count_x, int count_y, int count_z, float fill) {
    nx = count_x;
    ny = count_y;
    nz = count_z;
    const std::size_t total = count_x > 0 && count_y > 0 && count_z > 0
                                  ? static_cast<std::size_t>(count_x) * static_cast<std::size_t>(count_y) *
                                        static_cast<std::size_t>(count_z)
                                  : 0;
    values.assign(total, fill);
}

void ModelValues::release() {
    nx = ny = nz = 0;
    std::vector<float>().swap(values);
}

namespace {

std::size_t cell_offset(const ModelValues& model, int i, int j, int k) {
    if (i < 1 || i > model.nx || j < 1 || j > model.ny || k < 1 || k > model.nz)
        throw std::out_of_range("model cell (" + std::to_string(i) + ", " + std::to_string(j) + ", " +
                                std::to_string(k) + ") is outside the model");
    return static_cast<std::size_t>(i - 1) +
           static_cast<std::size_t>(model.nx) *
               (static_cast<std::size_t>(j - 1) + static_cast<std::size_t>(model.ny) * static_cast<std::size_t>(k - 1));
}

}  // namespace

float& ModelValues::at(int i, int j, int k) { return values[cell_offset(*this, i, j, k)]; }
float ModelValues::at(int i, int j, int k) const { return values[cell_offset(*this, i, j, k)]; }

ModelWriteRequest whole_model_request(const ModelValues& model) {
    ModelWriteRequest request;
    request.end_x = model.nx + 1;
    request.end_y = model.ny + 1;
    request.end_z = model.nz + 1;
    return request;
}

namespace {

constexpr char model_picture[] = "0.00000E+00";
constexpr char zero_line[] = " 0.00000E+00";
constexpr std::size_t zero_line_length = sizeof zero_line - 1;

/// The seven significant digits of the single real (what every picture starts from), then the six
/// the picture keeps, rounded half away from zero. Only where the single real times a power of ten
/// is exact in a double; false elsewhere, and the general picture code decides.
bool fast_model_digits(double magnitude, long long& digits, int& exponent) {
    static constexpr double powers[] = {1e-6, 1e-5, 1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2,
                                        1e3,  1e4,  1e5,  1e6,  1e7};
    static constexpr double scales[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12};
    if (!(magnitude >= 1e-6 && magnitude < 1e7)) return false;
    int decade = 0;  // index into powers: magnitude in [powers[decade], powers[decade + 1])
    while (decade < 12 && magnitude >= powers[decade + 1]) ++decade;
    exponent = decade - 6;
    const int shift = 6 - exponent;
    const double scaled = magnitude * scales[shift];
    if (std::fma(magnitude, scales[shift], -scaled) != 0) return false;
    double rounded = std::nearbyint(scaled);  // half to even on an exact value, as to_chars rounds
    if (rounded < 1e6 || rounded > 1e7) return false;
    if (rounded == 1e7) {
        rounded = 1e6;
        ++exponent;
    }
    digits = (static_cast<long long>(rounded) + 5) / 10;
    if (digits == 1000000) {
        digits = 100000;
        ++exponent;
    }
    return true;
}

}  // namespace

std::size_t model_value_text(char* out, float value) {
    if (value == 0) {
        std::memcpy(out, zero_line, zero_line_length);
        return zero_line_length;
    }
    long long digits = 0;
    int exponent = 0;
    if (!fast_model_digits(std::fabs(static_cast<double>(value)), digits, exponent)) {
        out[0] = ' ';
        return 1 + format_picture_to(out + 1, 23, value, model_picture);
    }
    char* p = out;
    *p++ = ' ';
    if (value < 0) *p++ = '-';
    char mantissa[6];
    for (int i = 5; i >= 0; --i) {
        mantissa[i] = static_cast<char>('0' + digits % 10);
        digits /= 10;
    }
    *p++ = mantissa[0];
    *p++ = '.';
    std::memcpy(p, mantissa + 1, 5);
    p += 5;
    *p++ = 'E';
    *p++ = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;
    *p++ = static_cast<char>('0' + magnitude / 10);
    *p++ = static_cast<char>('0' + magnitude % 10);
    return static_cast<std::size_t>(p - out);
}

namespace {

/// A file written through one large buffer; the model file of a large mesh is hundreds of megabytes.
class ModelFileOutput {
public:
    /// `largest_reserve`: the most one reserve() call asks for.
    explicit ModelFileOutput(const std::filesystem::path& path, std::size_t largest_reserve = 64)
        : path_(path), capacity_(std::max(std::size_t{1} << 20, 2 * largest_reserve)), buffer_(new char[capacity_]) {
        file_ = std::fopen(path.c_str(), "wb");
        if (!file_) throw std::runtime_error("cannot create " + path.string());
    }
    ~ModelFileOutput() {
        if (file_) std::fclose(file_);
    }
    ModelFileOutput(const ModelFileOutput&) = delete;
    ModelFileOutput& operator=(const ModelFileOutput&) = delete;

    /// Room for at least `bytes` more (bytes below the slack).
    char* reserve(std::size_t bytes) {
        if (length_ + bytes > capacity_) flush();
        return buffer_.get() + length_;
    }
    void advance(std::size_t bytes) { length_ += bytes; }
    void write(const void* data, std::size_t bytes) {
        flush();
        if (bytes > 0 && std::fwrite(data, 1, bytes, file_) != bytes) throw std::runtime_error("cannot write " + path_.string());
    }
    void close() {
        flush();
        std::FILE* file = file_;
        file_ = nullptr;
        if (std::fclose(file) != 0) throw std::runtime_error("cannot write " + path_.string());
    }

private:
    void flush() {
        if (length_ > 0 && std::fwrite(buffer_.get(), 1, length_, file_) != length_)
            throw std::runtime_error("cannot write " + path_.string());
        length_ = 0;
    }
    std::filesystem::path path_;
    std::size_t capacity_;
    std::FILE* file_ = nullptr;
    std::unique_ptr<char[]> buffer_;
    std::size_t length_ = 0;
};

void check_range(const ModelValues& model, const ModelWriteRequest& request) {
    const auto inside = [](int first, int end, int count) { return first >= 1 && end >= first && end <= count + 1; };
    if (!inside(request.first_x, request.end_x, model.nx) || !inside(request.first_y, request.end_y, model.ny) ||
        !inside(request.first_z, request.end_z, model.nz))
        throw std::out_of_range("the model range is outside the model");
    if (model.values.size() != static_cast<std::size_t>(model.nx) * model.ny * model.nz)
        throw std::out_of_range("the model array does not match its counts");
}

void write_binary_model(const std::filesystem::path& file, const ModelValues& model, const ModelWriteRequest& request) {
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    ModelFileOutput out(file);
    const char header[4] = {'U', 'B', 'C', static_cast<char>(static_cast<unsigned char>(request.model_kind))};
    std::memcpy(out.reserve(4), header, 4);
    out.advance(4);
    const bool whole = request.first_x == 1 && request.first_y == 1 && request.first_z == 1 &&
                       request.end_x == model.nx + 1 && request.end_y == model.ny + 1 && request.end_z == model.nz + 1;
    if (whole) {
        out.write(model.values.data(), model.values.size() * sizeof(float));
    } else {
        // Cell by cell in the text form's order; the reader takes only the raw order back.
        for (int j = request.first_y; j < request.end_y; ++j)
            for (int i = request.first_x; i < request.end_x; ++i)
                for (int k = request.first_z; k < request.end_z; ++k) {
                    const float value = model.at(i, j, k);
                    std::memcpy(out.reserve(sizeof value), &value, sizeof value);
                    out.advance(sizeof value);
                }
    }
    out.close();
}

/// What the coded exports put behind each value: the range of mode 2, or the unit range.
std::string range_text(const ModelWriteRequest& request) {
    if (request.export_mode != 2 && request.export_mode != 3) return {};
    if (request.export_mode == 2 && request.range_low < request.range_high) {
        char text[64];
        std::size_t length = model_value_text(text, request.range_mid - request.range_low);
        length += model_value_text(text + length, request.range_high - request.range_low);
        return std::string(text, length);
    }
    return " -1.0 1.0";
}

void write_text_model(Dialogue& dialogue, const std::filesystem::path& file, const ModelValues& model,
                      const ModelWriteRequest& request) {
    const std::string suffix = range_text(request);
    // The longest line: a value (at most 14 characters), the range text and the line end.
    const std::size_t line_room = suffix.empty() ? 32 : 64;
    ModelFileOutput out(file, static_cast<std::size_t>(request.end_z - request.first_z) * line_room + 64);
    if (request.expanded > 0) {
        out.close();
        return;
    }
    const int count_x = request.end_x - request.first_x;
    const int count_y = request.end_y - request.first_y;
    const int count_z = request.end_z - request.first_z;
    const double total = static_cast<double>(count_x) * count_y * count_z;
    // One y row of the range, turned so that each cell column (z from the top) lies together: the
    // array holds z as its slowest index, and reading it in file order would jump a whole layer per line.
    std::vector<float> slab(static_cast<std::size_t>(count_x) * static_cast<std::size_t>(count_z));
    const std::size_t layer = static_cast<std::size_t>(model.nx) * static_cast<std::size_t>(model.ny);

    // Each line is copied as one 16-byte block from a prepared text with its line end: a plain run's
    // model is one value repeated millions of times.
    struct LineText {
        char text[64];
        std::size_t length;
    };
    const auto prepare = [&suffix](LineText& line, float value) {
        line.length = model_value_text(line.text, value);
        std::memcpy(line.text + line.length, suffix.data(), suffix.size());
        line.length += suffix.size();
        line.text[line.length++] = '\r';
        line.text[line.length++] = '\n';
    };
    LineText null_text, last_text;
    prepare(null_text, request.null_value);
    float last_value = 0;
    prepare(last_text, last_value);
    const std::size_t column_bytes = static_cast<std::size_t>(count_z) * line_room;

    double written = 0;
    ProgressMeter progress(dialogue, total);
    for (int j = request.first_y; j < request.end_y; ++j) {
        for (int k = 0; k < count_z; ++k) {
            const float* row = model.values.data() + static_cast<std::size_t>(request.first_z - 1 + k) * layer +
                               static_cast<std::size_t>(j - 1) * static_cast<std::size_t>(model.nx) +
                               static_cast<std::size_t>(request.first_x - 1);
            for (int i = 0; i < count_x; ++i) slab[static_cast<std::size_t>(i) * count_z + k] = row[i];
        }
        for (int i = 0; i < count_x; ++i) {
            const float* column = slab.data() + static_cast<std::size_t>(i) * count_z;
            char* line = out.reserve(column_bytes);
            char* const column_start = line;
            for (int k = 0; k < count_z; ++k) {
                const float value = column[k];
                const LineText* text = &null_text;
                if (!(value <= null_value_single)) {
                    const float scaled = value / request.scale;
                    if (scaled != last_value || std::signbit(scaled) != std::signbit(last_value)) {
                        last_value = scaled;
                        prepare(last_text, scaled);
                    }
                    text = &last_text;
                }
                std::memcpy(line, text->text, 16);
                if (text->length > 16) std::memcpy(line + 16, text->text + 16, text->length - 16);
                line += text->length;
            }
            out.advance(static_cast<std::size_t>(line - column_start));
            written += count_z;
            progress.advance(written);
        }
    }
    out.close();
}

}  // namespace

void write_model_file(Dialogue& dialogue, const std::filesystem::path& file, const ModelValues& model,
                      const ModelWriteRequest& request) {
    check_range(model, request);
    if (request.export_mode == 1)
        throw std::invalid_argument("the coded model export by cell codes has no code tables in this program");
    dialogue.progress(0);
    if (request.export_mode == model_export_binary && dialogue.ask_yes_no("Export model in binary format?"))
        write_binary_model(file, model, request);
    else
        write_text_model(dialogue, file, model, request);
}

}  // namespace invsetup
