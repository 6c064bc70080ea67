// src/modelfiles/model_file_write.h - model files: the UBC text form (one value per cell, y outer,
// x, z inner from the top) and the binary form with its "UBC" header that the model reader takes back.
#pragma once
#include <cstddef>
#include <string>
#include <filesystem>
#include <vector>

namespace invsetup {
class Dialogue;

/// Cell values of a mesh, indices from 1. Stored x fastest, then y, then z (z from the top), which is
/// the order the binary form writes raw. -1e32 marks a null cell.
struct ModelValues {
    int nx = 0, ny = 0, nz = 0;
    std::vector<float> values;

    /// Sizes the array nx by ny by nz, every cell `fill`.
    void size(int count_x, int count_y, int count_z, float fill = 0);
    /// Back to no cells, the memory given back.
    void release();
    /// Cell (i, j, k); throws std::out_of_range outside 1..nx, 1..ny, 1..nz.
    float& at(int i, int j, int k);
    float at(int i, int j, int k) const;
};

/// The export mode that asks for the binary form.
inline constexpr int model_export_binary = 6660;

/// What to write. The node range selects cells first..end - 1 on each axis (1-based node indices).
struct ModelWriteRequest {
    /// 0 text; model_export_binary asks "Export model in binary format?"; 2 and 3 the coded text
    /// exports, each value followed by the range (see write_model_file); 1 the coded export by cell
    /// codes, which this program has no code tables for.
    int export_mode = 0;
    int export_type = 0;  // the sub-form of a coded export: 1, 4, 5, 7 or 9
    float range_low = 0, range_high = 0, range_mid = 0;  // the range of export mode 2
    int first_x = 1, end_x = 1, first_y = 1, end_y = 1, first_z = 1, end_z = 1;
    float null_value = 0;  // written for a null cell (at or below -1e32)
    float scale = 1;       // each text value is divided by it
    int expanded = 0;      // above 0: an expanded tile; the text file is left empty
    int model_kind = 0;    // the fourth byte of the binary header
};

/// A request for every cell of `model`.
ModelWriteRequest whole_model_request(const ModelValues& model);

/// One text line of the model file without its line end: a blank and the value by the picture
/// "0.00000E+00" (single real digits, a minus sign straight after the blank). Writes into `out`, which
/// must hold 24 characters; returns the length.
std::size_t model_value_text(char* out, float value);

/// Writes the model file, replacing `file`. The text form divides each value by the scale and writes
/// the null value for a null cell; the binary form writes the whole array raw (x fastest) when the
/// range covers it, else each cell of the range unscaled, y outer, x, z inner. Export modes 2 and 3
/// write the text form with the range behind every line: in mode 2 with range_low below range_high
/// the widths range_mid - range_low and range_high - range_low (" 2.00000E+00 4.00000E+00"),
/// otherwise " -1.0 1.0". Progress goes to `dialogue` after each cell column. Raises no message;
/// throws std::runtime_error naming the file when it can't be created or written, and
/// std::invalid_argument for export mode 1, before any file is touched.
void write_model_file(Dialogue& dialogue, const std::filesystem::path& file, const ModelValues& model,
                      const ModelWriteRequest& request);

}  // namespace invsetup
