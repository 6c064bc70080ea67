// src/modelfiles/model_file_read.cpp - the model readers of refinement mode and the conditioning of
// the values they read.
#include "modelfiles/model_file_read.h"

#include <bit>
#include <cmath>
#include <limits>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "modelfiles/mesh_file_read.h"
#include "session.h"
#include "support/dialogue.h"
#include "support/files.h"
#include "support/numbers.h"
#include "support/text.h"

namespace invsetup {

static_assert(std::endian::native == std::endian::little, "the binary model form is little-endian");

void clear_model(LoadedModel& model) {
    model.loaded = false;
    model.model_min = 1e32f;
    model.model_max = -1e32f;
}

namespace {

constexpr const char* end_of_file_text = "Unexpected end of file was encountered while reading the model file";

/// A read that stopped after its message (or, for a declined component, without one).
struct ReadStopped {};

/// A number of the file as the single real it is kept as; one a single real can't hold (or that
/// isn't finite) stops the read, named.
float single_value(double value, std::string_view token) {
    if (!(std::fabs(value) <= std::numeric_limits<float>::max()))
        throw std::range_error("the value " + std::string(token) + " is not a finite number a single real holds");
    return static_cast<float>(value);
}

/// The whole file in memory: a model file is read once, start to end.
class FileBytes {
public:
    explicit FileBytes(const std::string& file_name) {
        require_regular_file(native_path(file_name), "model file");
        std::FILE* file = std::fopen(native_path(file_name).c_str(), "rb");
        if (!file) throw std::runtime_error("The model file " + file_name + " could not be opened.");
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> closer(file, std::fclose);
        if (std::fseek(file, 0, SEEK_END) != 0) throw std::runtime_error("cannot read " + file_name);
        const long size = std::ftell(file);
        if (size < 0 || std::fseek(file, 0, SEEK_SET) != 0) throw std::runtime_error("cannot read " + file_name);
        bytes_.resize(static_cast<std::size_t>(size));
        if (size > 0 && std::fread(bytes_.data(), 1, bytes_.size(), file) != bytes_.size())
            throw std::runtime_error("cannot read " + file_name);
    }
    std::string_view view() const { return bytes_; }

private:
    std::string bytes_;
};

/// Numbers of a text model one after the other. `commas` makes commas separators too (the free-form
/// input of files with CR LF lines); bytes outside the printable range are skipped as the line
/// reader drops them.
class TokenReader {
public:
    TokenReader(std::string_view text, bool commas) : p_(text.data()), end_(text.data() + text.size()), commas_(commas) {}

    /// The next number; false at the end of the file. A word without a numeric start reads 0.
    bool next(float& value) {
        while (p_ < end_ && separator(*p_)) ++p_;
        if (p_ == end_) return false;
        const char* start = p_;
        while (p_ < end_ && !separator(*p_)) ++p_;
        if (plain_decimal(start, p_, value)) return true;
        // Numbers are read as double reals and kept as single ones.
        double wide = 0;
        const auto [rest, error] = std::from_chars(start, p_, wide);
        if (error != std::errc() || rest != p_)
            wide = parse_number_prefix(std::string_view(start, static_cast<std::size_t>(p_ - start)));
        value = single_value(wide, std::string_view(start, static_cast<std::size_t>(p_ - start)));
        return true;
    }
    /// The rest of the current line, for the layered form's first line.
    std::string_view line() {
        const char* start = p_;
        while (p_ < end_ && *p_ != '\r' && *p_ != '\n') ++p_;
        std::string_view result(start, static_cast<std::size_t>(p_ - start));
        if (p_ < end_ && *p_ == '\r') ++p_;
        if (p_ < end_ && *p_ == '\n') ++p_;
        return result;
    }

private:
    /// The common token of a model file, a sign, up to 15 digits and a decimal point, turned exactly
    /// into its double real (the digits and the power of ten are both exact). False for anything else.
    static bool plain_decimal(const char* p, const char* end, float& value) {
        static constexpr double powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8,
                                            1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
        const bool negative = p < end && *p == '-';
        if (negative) ++p;
        std::uint64_t digits = 0;
        int count = 0, decimals = -1;
        for (; p < end; ++p) {
            if (*p >= '0' && *p <= '9') {
                digits = digits * 10 + static_cast<unsigned>(*p - '0');
                if (++count > 15) return false;
                if (decimals >= 0) ++decimals;
            } else if (*p == '.' && decimals < 0) {
                decimals = 0;
            } else {
                return false;
            }
        }
        if (count == 0) return false;
        const double magnitude = static_cast<double>(digits) / powers[decimals < 0 ? 0 : decimals];
        value = static_cast<float>(negative ? -magnitude : magnitude);
        return true;
    }
    bool separator(char c) const {
        const auto byte = static_cast<unsigned char>(c);
        return byte <= 32 || byte > 126 || (commas_ && c == ',');
    }
    const char* p_;
    const char* end_;
    bool commas_;
};

/// The lines of a text, one at a time, without their ends; tabs count as blanks.
class LineReader {
public:
    explicit LineReader(std::string_view text) : p_(text.data()), end_(text.data() + text.size()) {}
    bool next(std::string& line) {
        if (p_ == end_) return false;
        line.clear();
        while (p_ < end_ && *p_ != '\r' && *p_ != '\n') {
            const auto byte = static_cast<unsigned char>(*p_++);
            if (byte == '\t')
                line.push_back(' ');
            else if (byte >= 32 && byte <= 126)
                line.push_back(static_cast<char>(byte));
        }
        if (p_ < end_ && *p_ == '\r') {
            ++p_;
            if (p_ < end_ && *p_ == '\n') ++p_;
        } else if (p_ < end_) {
            ++p_;
        }
        return true;
    }

private:
    const char* p_;
    const char* end_;
};

/// The cells of a model in the order of a text file: (outer, middle, inner) loops given as index
/// walks over x, y and z.
struct Walk {
    int axis;     // 0 x, 1 y, 2 z
    bool rising;  // index from 1 up, else from the count down
};

bool order_walks(int model_order, Walk walks[3]) {
    switch (model_order) {
        case 1: walks[0] = {1, true}; walks[1] = {0, true}; walks[2] = {2, true}; return true;
        case 2: walks[0] = {2, true}; walks[1] = {1, true}; walks[2] = {0, true}; return true;
        case 3: walks[0] = {2, true}; walks[1] = {0, true}; walks[2] = {1, false}; return true;
        case 4: walks[0] = {2, true}; walks[1] = {1, false}; walks[2] = {0, false}; return true;
        case 5: walks[0] = {2, true}; walks[1] = {1, false}; walks[2] = {0, true}; return true;
        default: return false;
    }
}

/// Calls `take(i, j, k)` for every cell in the order of the walks, with progress after each inner loop.
template <class Take>
void walk_cells(Dialogue& dialogue, const ModelValues& values, const Walk walks[3], Take take) {
    const int counts[3] = {values.nx, values.ny, values.nz};
    const double total = static_cast<double>(values.nx) * values.ny * values.nz;
    ProgressMeter progress(dialogue, total);
    double done = 0;
    int index[3] = {0, 0, 0};
    const auto at = [&](const Walk& walk, int n) { return walk.rising ? n : counts[walk.axis] + 1 - n; };
    for (int a = 1; a <= counts[walks[0].axis]; ++a) {
        index[walks[0].axis] = at(walks[0], a);
        for (int b = 1; b <= counts[walks[1].axis]; ++b) {
            index[walks[1].axis] = at(walks[1], b);
            for (int c = 1; c <= counts[walks[2].axis]; ++c) {
                index[walks[2].axis] = at(walks[2], c);
                take(index[0], index[1], index[2]);
            }
            done += counts[walks[2].axis];
            progress.advance(done);
        }
    }
}

void read_binary(std::string_view bytes, ModelValues& values) {
    // The rest of the file as raw reals in storage order; a short or long file is taken as it is.
    const std::size_t available = (bytes.size() - 4) / sizeof(float);
    const std::size_t count = std::min(available, values.values.size());
    if (count > 0) std::memcpy(values.values.data(), bytes.data() + 4, count * sizeof(float));
    for (std::size_t k = 0; k < count; ++k)
        if (!std::isfinite(values.values[k]))
            throw std::range_error("the stored value " + std::to_string(k + 1) + " is " +
                                   (std::isnan(values.values[k]) ? "not a number" : "infinite"));
}

/// The component the person wants from a multicomponent file whose first line is `first_line`.
int ask_component(Dialogue& dialogue, const LoadedModel& model, const std::string& first_line) {
    if (model.model_order == 4) {
        dialogue.message_box("The specified file is a multicomponent model and this format is not supported");
        throw ReadStopped{};
    }
    int count = 1;
    for (char c : first_line)
        if (c == ',') ++count;
    const std::string answer =
        trim(dialogue.ask_text("The specified file is a multicomponent model, select which component you require (1," +
                                   format_picture(count, "0") + ")",
                               "1"));
    if (answer.empty() || !is_numeric(answer)) throw ReadStopped{};
    const int component = to_integer(parse_number_prefix(answer));
    if (component < 1 || component > count) {
        dialogue.message_box("The selecetd component is invalid");
        throw ReadStopped{};
    }
    return component;
}

void read_layered(Dialogue& dialogue, std::string_view text, const LoadedMesh& mesh, LoadedModel& model) {
    ModelValues& values = model.values;
    TokenReader tokens(text, false);
    std::string first(tokens.line());
    const std::string sea = next_word(first), air_word = next_word(first);
    model.sea_value = single_value(parse_number_prefix(sea), sea);
    model.air_value = single_value(parse_number_prefix(air_word), air_word);
    const int air = std::min(mesh.air_cells, values.nz);
    const int sea_end = std::min(mesh.air_cells + mesh.sea_cells, values.nz);
    for (int k = 1; k <= sea_end; ++k) {
        const float value = k <= air ? model.air_value : model.sea_value;
        for (int j = 1; j <= values.ny; ++j)
            for (int i = 1; i <= values.nx; ++i) values.at(i, j, k) = value;
    }
    const std::size_t layer = static_cast<std::size_t>(values.nx) * static_cast<std::size_t>(values.ny);
    ProgressMeter progress(dialogue, static_cast<double>(layer) * values.nz);
    for (int k = std::max(sea_end, 0) + 1; k <= values.nz; ++k) {
        float* row = values.values.data() + static_cast<std::size_t>(k - 1) * layer;
        for (std::size_t n = 0; n < layer; ++n)
            if (!tokens.next(row[n])) {
                dialogue.message_box(end_of_file_text);
                throw ReadStopped{};
            }
        progress.advance(static_cast<double>(layer) * k);
    }
}

void read_text(Dialogue& dialogue, std::string_view text, const LoadedMesh& mesh, LoadedModel& model) {
    // Files written with CR LF lines are read by the free-form number input, the others word by word.
    const bool has_return = text.substr(0, 512).find('\r') != std::string_view::npos;
    const bool free_form = has_return && !(text.size() > 0 && static_cast<unsigned char>(text[0]) == 0xEF);
    if (mesh.mesh_format == 1) {
        read_layered(dialogue, text, mesh, model);
        return;
    }
    int component = 0;
    if (mesh.mesh_format == 0) {
        LineReader lines(text);
        std::string first;
        lines.next(first);
        first = trim(first);
        if (first.size() >= 2 && first.front() == '(' && first.back() == ')')
            component = ask_component(dialogue, model, first);
    }
    Walk walks[3];
    // Nothing sets the order: with the default every value stays 0.
    if (!order_walks(model.model_order, walks)) return;
    ModelValues& values = model.values;
    if (component > 0) {
        LineReader lines(text);
        std::string line;
        walk_cells(dialogue, values, walks, [&](int i, int j, int k) {
            if (!lines.next(line)) {
                dialogue.message_box(end_of_file_text);
                throw ReadStopped{};
            }
            std::string cell = trim(line);
            cell = cell.size() >= 2 ? cell.substr(1, cell.size() - 2) : std::string();
            const std::vector<std::string> parts = split_fields(cell);
            const std::size_t at = static_cast<std::size_t>(component - 1);
            values.at(i, j, k) = at < parts.size() && is_numeric(parts[at])
                                     ? single_value(parse_number_prefix(parts[at]), parts[at])
                                     : model.null_value;
        });
        return;
    }
    TokenReader tokens(text, free_form);
    walk_cells(dialogue, values, walks, [&](int i, int j, int k) {
        if (!tokens.next(values.at(i, j, k))) {
            dialogue.message_box(end_of_file_text);
            throw ReadStopped{};
        }
    });
}

/// The surface of a mesh without one, from the model: the top of the first present cell of each
/// column; a node takes the highest of the cells around it.
void surface_from_model(LoadedMesh& mesh, const ModelValues& values) {
    if (mesh.nx < 1 || mesh.ny < 1 || values.nx != mesh.nx || values.ny != mesh.ny ||
        mesh.z_nodes.size() < values.nz + 1)
        return;
    Array2<float> tops(mesh.nx, mesh.ny, -1e32f);
    bool any = false;
    for (int j = 1; j <= mesh.ny; ++j)
        for (int i = 1; i <= mesh.nx; ++i)
            for (int k = 1; k <= values.nz; ++k)
                if (!is_null(values.at(i, j, k))) {
                    tops(i, j) = static_cast<float>(mesh.z_nodes[k]);
                    any = true;
                    break;
                }
    if (!any) return;
    mesh.topo_grid.assign(mesh.nx + 1, mesh.ny + 1, -1e32f);
    mesh.topo_min = 1e32f;
    mesh.topo_max = -1e32f;
    for (int j = 1; j <= mesh.ny + 1; ++j)
        for (int i = 1; i <= mesh.nx + 1; ++i) {
            float top = -1e32f;
            for (int b = j - 1; b <= j; ++b)
                for (int a = i - 1; a <= i; ++a)
                    if (a >= 1 && a <= mesh.nx && b >= 1 && b <= mesh.ny && tops(a, b) > top) top = tops(a, b);
            mesh.topo_grid(i, j) = top;
            if (is_null(top)) continue;
            if (top < mesh.topo_min) mesh.topo_min = top;
            if (top > mesh.topo_max) mesh.topo_max = top;
        }
}

}  // namespace

int read_model_file(Dialogue& dialogue, const std::string& file_name, const LoadedMesh& mesh, LoadedModel& model) {
    dialogue.progress(0);
    try {
        model.values.size(mesh.nx, mesh.ny, mesh.nz, 0.0f);
        const FileBytes file(file_name);
        const std::string_view bytes = file.view();
        const bool binary = bytes.size() >= 4 && bytes.substr(0, 3) == "UBC" &&
                            static_cast<unsigned char>(bytes[3]) >= 1 && static_cast<unsigned char>(bytes[3]) <= 8;
        if (binary)
            read_binary(bytes, model.values);
        else
            read_text(dialogue, bytes, mesh, model);
        return 0;
    } catch (const ReadStopped&) {
        return -1;
    } catch (const std::exception& fault) {
        dialogue.message_box("An error occurred while reading the model file : \n" +
                             read_fault_text("model file", file_name, "values", fault));
        return -1;
    }
}

namespace {
/// Nulls, scale and extremes of the values just read; the surface of a mesh without one.
void condition_values(Session& session, LoadedModel& model);
}  // namespace

int load_model(Session& session, const std::string& file_name) {
    LoadedModel& model = session.loaded_model;
    clear_model(model);
    const int status = read_model_file(session.dialogue, file_name, session.loaded_mesh, model);
    if (status < 0) return status;
    try {
        condition_values(session, model);
    } catch (const std::exception& fault) {
        session.dialogue.message_box("An error occurred while reading the model file : \n" + std::string(fault.what()));
        return -1;
    }
    model.loaded = true;
    return 0;
}

namespace {

void condition_values(Session& session, LoadedModel& model) {
    ModelValues& values = model.values;
    model.mask.assign(values.values.size(), 0);
    model.model_min = 1e32f;
    model.model_max = -1e32f;
    const bool inverted = model.model_kind == 6 || model.model_kind == 8;
    for (float& value : values.values) {
        if (value <= model.null_value)
            value = -1e32f;
        else if (inverted)
            value = value <= 0 ? -1e32f : model.scale / value;
        else
            value *= model.scale;
        if (value > -1e30f) {
            if (value < model.model_min) model.model_min = value;
            if (value > model.model_max) model.model_max = value;
        }
    }
    LoadedMesh& mesh = session.loaded_mesh;
    if (model.model_min < model.model_max) {
        model.display_mode = model.model_min > 0 ? 2 : 1;
        // A trapezoidal mesh's model is shown from 0 up.
        if (mesh.mesh_format == 4) model.model_min = 0;
    }
    // A mesh that holds its own surface keeps it; the model's surface stands in only for a missing one.
    if (!mesh.has_topo) surface_from_model(mesh, values);
}

}  // namespace

}  // namespace invsetup
