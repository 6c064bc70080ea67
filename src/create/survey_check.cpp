// src/create/survey_check.cpp - the observed data and the topography tried on the mesh before a creation.
#include "create/survey_check.h"

#include <algorithm>

#include "data/observed_data.h"
#include "data/topography.h"
#include "session.h"

namespace invsetup {

namespace {

/// Whether the topography points (the readings of the file, without the closing points round the
/// mesh) reach over the area of the mesh that takes readings.
bool points_hold_core(const Topography& topography, const InversionMesh& mesh, int margin) {
    return topography.points_extent.holds(mesh.x_nodes[1 + margin], mesh.x_nodes[mesh.nx + 1 - margin],
                                          mesh.y_nodes[1 + margin], mesh.y_nodes[mesh.ny + 1 - margin]);
}

}  // namespace

void take_surface_coverage(const Session& session, SurveyCoverage& coverage) {
    const InversionDefinition& d = session.definition;
    coverage = SurveyCoverage{};
    coverage.grids = d.obs_data_file_type == 1;
    coverage.data_file = d.data_file_names[coverage.grids ? 2 : 0];
    if (d.topo_type != 0) return;
    coverage.topography_file = d.data_file_names[1];
    coverage.topography_is_grid = d.data_file_kinds[1] != 0;
    if (!coverage.topography_is_grid)
        coverage.points_hold_core = points_hold_core(session.topography, session.mesh, d.add_mesh_padding != 0 ? 4 : 0);
}

void take_reading_coverage(const Session& session, SurveyCoverage& coverage) {
    const ObservationList& list = session.readings;
    coverage.readings = coverage.grids ? list.cells_sampled : list.read_count;
    coverage.valid = coverage.readings - list.left_out_null;
    coverage.inside_core = coverage.valid - list.left_out_outside;
    coverage.on_topography = coverage.inside_core - list.left_out_no_topography;
    coverage.kept = session.bins.bin_total;
}

}  // namespace invsetup
