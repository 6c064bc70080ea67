// src/modelfiles/model_interpolation.h - the loaded model moved onto the run's refined mesh: each new
// cell samples the old model at its centre, linearly between the old cell centres.
#pragma once
#include <vector>

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

/// A cell of a trapezoidal mesh and a point's fractions across it, from node (i, j) towards (i + 1, j)
/// and (i, j + 1).
struct TrapezoidCell {
    int i = 0, j = 0;
    double fx = 0, fy = 0;
};

/// The cell lookup of a trapezoidal mesh, from the nodes, mean row bearing and row tables its reader
/// built: a first guess from the point's offsets along and across the bearing, then a walk to the
/// neighbouring cell while the point lies beyond a side of the cell.
class TrapezoidLookup {
public:
    explicit TrapezoidLookup(const LoadedMesh& mesh);
    /// The cell holding the map point (x, y); false outside the mesh's nodes.
    bool find(double x, double y, TrapezoidCell& cell) const;
    /// The map point at fractions (fx, fy) of cell (i, j): the bilinear blend of its four nodes.
    void map_point(int i, int j, double fx, double fy, double& x, double& y) const;

private:
    const LoadedMesh& mesh_;
    std::vector<double> along_;   // offsets of the first row's nodes along the bearing
    std::vector<double> across_;  // offsets of the first column's nodes across it
};

/// Fills `target_values` (sized to the target mesh) from `model` on `source`. `mode` 1 interpolates
/// the values, above 1 their asinh. With `fill_columns` 1 each source column is filled upwards from
/// its first present cell while the samples are taken (an empty column reads 0) and put back after,
/// and the target's cells above its surface become null. Cells outside the source stay -1e32.
/// A trapezoidal source: the target stands in the source's own frame (its nodes' x and y), and each
/// target column is carried to the map through the source's nodes before the model is sampled there.
/// Progress goes to the dialogue.
void interpolate_model_to_mesh(Dialogue& dialogue, int mode, int fill_columns, const LoadedMesh& source,
                               LoadedModel& model, const InterpolationTarget& target, ModelValues& target_values);

/// The value of `model` on `source` at the point (x, y, z) of the source's coordinates (map
/// coordinates of its nodes for a trapezoidal source): the trilinear blend of the eight cell centres
/// around it, or the slope rule when some are null; -1e32 outside the source's columns. `mode` as above.
float sample_model(int mode, const LoadedMesh& source, const LoadedModel& model, double x, double y, double z);

float sinh_value(float v);
float asinh_value(float v);

}  // namespace invsetup
