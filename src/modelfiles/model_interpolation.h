// src/modelfiles/model_interpolation.h - the loaded model moved onto the run's refined mesh: each new
// cell samples the old model at its centre, linearly between the old cell centres.
#pragma once
#include "support/array1.h"

namespace invsetup {
class Dialogue;
struct InversionMesh;
struct LoadedMesh;
struct LoadedModel;
struct ModelValues;

/// The mesh a model is moved onto, with its surface.
struct InterpolationTarget {
    const InversionMesh* mesh = nullptr;
    /// The surface at the target's nodes ((nx + 1) by (ny + 1)): only for a mesh hung from its surface
    /// (mesh_format 5), whose depths count from it; null for a mesh of plain elevations.
    const Array2<float>* surface_nodes = nullptr;
    int mesh_format = 0;
    float drape_range = 0, drape_bottom = 0;
    /// The surface at the target's cell centres (nx by ny): cells whose top lies above it are cut off
    /// (with fill_columns 1). Null: nothing is cut.
    const Array2<float>* surface_cells = nullptr;
};

/// Fills `target_values` (sized to the target mesh) from `model` on `source`. `mode` 1 interpolates
/// the values, above 1 their asinh. With `fill_columns` 1 each source column is filled upwards from
/// its first present cell while the samples are taken (an empty column reads 0) and put back after,
/// and the target's cells above its surface become null. Cells outside the source stay -1e32.
/// Progress goes to the dialogue.
void interpolate_model_to_mesh(Dialogue& dialogue, int mode, int fill_columns, const LoadedMesh& source,
                               LoadedModel& model, const InterpolationTarget& target, ModelValues& target_values);

/// The value of `model` on `source` at the point (x, y, z) of the source's coordinates: the
/// trilinear blend of the eight cell centres around it, or the slope rule when some are null;
/// -1e32 outside the source's columns. `mode` as above.
float sample_model(int mode, const LoadedMesh& source, const LoadedModel& model, double x, double y, double z);

float sinh_value(float v);
float asinh_value(float v);

}  // namespace invsetup
