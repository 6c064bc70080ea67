// src/create/survey_check.h - what the observed data will give a creation, found before one: the
// readings of the file, how many lie inside the mesh core, how many have topography under them.
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

/// Grids the topography and conditions the observed data on session.mesh exactly as a creation does,
/// writing nothing, and gives back what it sized. Needs a checked definition and its mesh. Returns 0,
/// or -1 after the reader's or the gridding's message.
int survey_coverage(Session& session, SurveyCoverage& coverage);

}  // namespace invsetup
