// src/data/topography.h - the surface of one creation on the mesh: elevations at cell centres and
// nodes, the cells above ground in each column, and the triangulated topography points.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "grids/grid_file.h"
#include "grids/triangulation.h"
#include "support/array1.h"
#include "support/point_transform.h"

namespace invsetup {
struct Session;

/// A rectangle in plan, empty until a point is included.
struct PlanExtent {
    double x_low = 0, x_high = -1, y_low = 0, y_high = -1;
    bool empty() const { return x_high < x_low; }
    void include(double x, double y);
    /// True when the rectangle x0..x1 by y0..y1 lies within this one.
    bool holds(double x0, double x1, double y0, double y1) const;
};

struct Topography {
    Array2<float> topo_grid;   // (nx, ny) elevation at cell centres
    Array2<float> topo_nodes;  // (nx + 1, ny + 1) elevation at mesh nodes
    /// (nx, ny) cells of the column that reach above the surface, counted from the top: cell
    /// topo_cell + 1 is the first whose top node lies at or below the surface; nz when none does.
    Array2<int> topo_cell;

    /// The elevations of the triangulated points, 0-based in file order: the readings kept, then the
    /// closing points round the mesh. Empty when the surface came from a grid.
    int topo_point_count = 0;
    std::vector<double> topo_z;
    Triangulation triangulation;
    /// The plan extent of the readings kept (the closing points left out), and a rectangle the
    /// triangulation is known to cover (the closing points' own): the surface has a value everywhere
    /// inside it. Both empty when unknown or when the surface came from a grid.
    PlanExtent points_extent;
    PlanExtent covered;

    /// The topography grid read for the mesh's area, in the grid's own coordinates, when the surface
    /// came from a grid file (empty otherwise), and the transform from the mesh's coordinates to the
    /// grid's (active only when a coordinate transform is in use). Readings find their surface here.
    GridWindow surface_grid;
    PointTransform surface_transform;
    /// The topography offset, which belongs to the surface wherever it is used.
    float surface_offset = 0;

    /// Sizes the three surface tables for the mesh, cleared.
    void size_surface(int nx, int ny);
    /// Everything back to empty.
    void clear();
};

/// The surface at a reading (x, y), in the mesh's coordinates, with the topography offset added: from
/// the triangulated points, or from the topography grid by the same bilinear rule that gives the
/// cells their surface. Null (-1e32) where the surface has no value: outside the triangulation,
/// outside the grid or beside a null grid node, or when there is no surface at all.
double topo_elevation_at(const Topography& topography, double x, double y);

/// topo_elevation_at for a run of nearby places: the triangulation's search carries from one place to
/// the next. Each thread takes a lookup of its own; the values are those of topo_elevation_at.
class SurfaceLookup {
public:
    explicit SurfaceLookup(const Topography& topography);
    double at(double x, double y);

private:
    const Topography& topography_;
    std::optional<Triangulation::Cursor> cursor_;
};

/// The surface from the point file's readings, locations(1..count, 1..3) x, y, z: the readings within
/// one cell of the mesh and without a null elevation are triangulated with closing points round the
/// mesh at their mean elevation, and the triangulation gives topo_grid at the cell centres and
/// topo_nodes at the nodes, each plus elevation_offsets[1] and, with topo_shift_option on, moved down
/// to the nearest node at or below it; topo_cell follows. Returns 0, or -1 after "The topo data file
/// did not contain enough data points to be meaningful" (4 or fewer), "All Points in the topography
/// file are colinear", or a trapped fault.
int grid_topo_from_points(Session& session, int count, const Array2<double>& locations);

/// The same tables from a topography grid read for the mesh's area (with one cell's margin, through
/// the coordinate transform when it is active): the grid's bilinear value at each centre and node.
/// Places the grid leaves without a value take the mean of those it gives. Returns 0, or -1 after the
/// grid layer's message, "The topo grid file has no values over the mesh", or a trapped fault.
int grid_topo_from_file(Session& session, const std::string& file_name);

/// The surface of the definition's topography file on session.mesh: a point file (kind 0) read by its
/// column definitions and triangulated, any other kind read as a grid. Returns 0, or -1 after the
/// reader's or the gridding's message.
int grid_topography(Session& session);

/// Marks the cells above the surface in session.mesh.cell_state with -1.0 and, for every method but
/// the in-house one, lifts each filled bin to at least 0.1 above the top node of its column's first
/// ground cell. Returns 0, or -1 after the trap's message.
int process_inversion_topo(Session& session);

/// The elevation and the air-cell count of one place: `elevation` (with its offset added) moved down
/// to the nearest node at or below it when `shift` is on; z_nodes falling, 1..nz+1. A node within
/// `tolerance` of the elevation counts as at it (see level_tolerance).
void place_on_mesh_column(const Array1<double>& z_nodes, int nz, bool shift, double tolerance, double& elevation,
                          int& air_cells);

}  // namespace invsetup
