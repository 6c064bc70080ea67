// src/grids/triangulation.h - a Delaunay triangulation of scattered points in plan, and linear
// interpolation of a value carried by the points (an elevation) inside its triangles. These are the
// operations the rest of the system calls by their old library names, DELTRI and TRIVAL.
#pragma once
#include <memory>
#include <span>
#include <vector>

namespace invsetup {

/// Status of DELTRI when every point lies on one straight line (or fewer than three differ).
inline constexpr int triangulation_colinear = 2;

/// A point in plan and its number: the value arrays of the interpolation are indexed by the number.
struct NumberedPoint {
    double x = 0, y = 0;
    int number = 0;
};

/// The triangulation of one point set. The points are numbered 0..count-1 in the order given; a
/// value array in that order is passed to each interpolation, so one triangulation serves any value.
/// It remembers the triangle where it found the last point and starts the next search there, which
/// makes a walk over neighbouring points (a mesh row, readings along a line) nearly free; this makes
/// the const interpolation operations unsafe to call from two threads at once.
class Triangulation {
public:
    Triangulation();
    ~Triangulation();
    Triangulation(Triangulation&&) noexcept;
    Triangulation& operator=(Triangulation&&) noexcept;

    /// Triangulates the points (x[k], y[k]); x and y of one length. The points are inserted in a
    /// spatial order, whatever order they come in. Returns 0, or triangulation_colinear with the
    /// triangulation left empty. Of points at one place only one is kept, and its value is used.
    int build(std::span<const double> x, std::span<const double> y);
    /// The same from the numbered points (finite), which it sorts in place and then frees: a caller
    /// that gathers its points this way holds them once, not as coordinate arrays and pairs beside them.
    int build(std::vector<NumberedPoint>&& points);
    void clear();
    bool empty() const;
    int triangle_count() const;

    /// The value at (x, y), linear inside the triangle holding the point, from the values z of the
    /// points (z[k] belongs to point k of build). On an edge or a vertex every triangle there gives
    /// the same value. Below -1e30 (the null value) outside the hull or when the triangulation is empty.
    double interpolate(double x, double y, std::span<const double> z) const;
    /// values[k] at (x[k], y[k]) for each k, spans of one length; search hints carry from one point
    /// to the next, so points given in a walking order cost little each. Long lists are split in
    /// blocks over the worker threads, with the same values.
    void interpolate_many(std::span<const double> x, std::span<const double> y, std::span<const double> z,
                          std::span<double> values) const;

    /// A walk over the triangulation with a search start of its own, for one run of nearby points:
    /// several cursors may walk one triangulation at the same time (one per thread). The value at a
    /// point never depends on where the walk came from: a point on an edge takes the value along that
    /// edge, whichever of its two triangles the walk found.
    class Cursor {
    public:
        explicit Cursor(const Triangulation& triangulation);
        ~Cursor();
        Cursor(const Cursor&) = delete;
        Cursor& operator=(const Cursor&) = delete;
        double interpolate(double x, double y, std::span<const double> z);

    private:
        struct State;
        std::unique_ptr<State> state_;
    };

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Puts the points in the order the library's spatial sort gives them (a shuffle, then a Hilbert
/// curve at growing scales), with its largest steps on two cores; the order does not depend on the
/// thread count.
void sort_in_curve_order(std::vector<NumberedPoint>& points);

/// True when all the points (x[k], y[k]) lie on one straight line, tested exactly; also true for
/// fewer than three points or when all points coincide.
bool points_are_colinear(std::span<const double> x, std::span<const double> y);
bool points_are_colinear(std::span<const NumberedPoint> points);

/// Triangulates the first `count` points of x and y into `triangulation`. Returns the triangle
/// count; `status` is 0, or triangulation_colinear when no triangle can be formed.
int DELTRI(int count, const double* x, const double* y, Triangulation& triangulation, int& status);

/// The linear interpolation at (x, y) of the values z (one per point of DELTRI) in the triangle that
/// holds the point; below -1e30 outside the hull.
double TRIVAL(double x, double y, const double* z, int count, const Triangulation& triangulation);

}  // namespace invsetup
