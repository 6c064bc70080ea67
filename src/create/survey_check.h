// src/create/survey_check.h - what the observed data will give a creation, found before one: the
// readings of the file, how many lie inside the mesh core, how many have topography under them.
// The size estimate's data pass fills it (estimate_run_size), so that the data is read once.
#pragma once
#include <string>

namespace invsetup {
struct Session;

/// The readings of a definition as the create driver would condition them on session.mesh. With
/// grids, a "reading" is a cell of the mesh core. Each count is of the readings that passed the tests
/// before it.
struct SurveyCoverage {
    bool grids = false;
    std::string data_file;  // the point file, or the first grid
    long readings = 0;      // in the file (point file), or core cells looked at (grids)
    long valid = 0;         // without a null value or elevation
    long inside_core = 0;   // of those, inside the mesh core
    long on_topography = 0; // of those, with topography under them
    long kept = 0;          // filled mesh columns, one reading each
    /// The topography: "" when the run takes the top of the mesh as its surface.
    std::string topography_file;
    bool topography_is_grid = false;
    /// Point topography: whether its points' extent holds the mesh core. Beyond the points the
    /// surface is drawn towards their mean elevation.
    bool points_hold_core = true;
};

/// The files and the surface part, from session.topography as the topography gridding of a
/// creation's data pass left it (call it before the readings are taken).
void take_surface_coverage(const Session& session, SurveyCoverage& coverage);
/// The reading counts, from session.readings and session.bins as the conditioning of the observed
/// data on session.mesh left them.
void take_reading_coverage(const Session& session, SurveyCoverage& coverage);

}  // namespace invsetup
