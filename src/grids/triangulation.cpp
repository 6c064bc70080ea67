// src/grids/triangulation.cpp - Delaunay triangulation on CGAL, with exact predicates and plain
// double constructions: orientation and in-circle tests decide the triangles, the interpolation
// itself needs no more than double arithmetic.
#include "grids/triangulation.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Hilbert_sort_median_2.h>
#include <CGAL/Multiscale_sort.h>
#include <CGAL/Spatial_sort_traits_adapter_2.h>
#include <CGAL/Triangulation_vertex_base_with_info_2.h>
#include <CGAL/algorithm.h>
#include <boost/property_map/property_map.hpp>
#include <boost/random/linear_congruential.hpp>
#include <boost/random/random_number_generator.hpp>

#include "support/numbers.h"
#include "support/threads.h"

namespace invsetup {

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Point = Kernel::Point_2;
using VertexBase = CGAL::Triangulation_vertex_base_with_info_2<int, Kernel>;  // info: the point's number
using FaceBase = CGAL::Triangulation_face_base_2<Kernel>;
using DataStructure = CGAL::Triangulation_data_structure_2<VertexBase, FaceBase>;
using Delaunay = CGAL::Delaunay_triangulation_2<Kernel, DataStructure>;
using FaceHandle = Delaunay::Face_handle;

/// The plan position of a numbered point, as the spatial sort reads it.
struct PlanOfPoint {
    using key_type = NumberedPoint;
    using value_type = Point;
    using reference = Point;
    using category = boost::readable_property_map_tag;
    friend Point get(PlanOfPoint, const NumberedPoint& point) { return Point(point.x, point.y); }
};

using SortTraits = CGAL::Spatial_sort_traits_adapter_2<Kernel, PlanOfPoint>;
using PointIterator = std::vector<NumberedPoint>::iterator;

/// The library's median Hilbert sort with its two largest steps shared by two cores. A run of more
/// than `two_core_from` points is split at the median of x, then each half at its median of y (one
/// half per core), and the four quarters are sorted two per core: the same splits and the same
/// recursion as the library's own sequential sort, so the order comes out the same to the point.
class TwoCoreHilbertSort {
public:
    static constexpr std::ptrdiff_t two_core_from = 8192;

    TwoCoreHilbertSort(const SortTraits& traits, std::ptrdiff_t limit)
        : traits_(traits), sequential_(traits, limit), limit_(limit) {}

    void operator()(PointIterator begin, PointIterator end) const {
        if (end - begin < two_core_from || end - begin <= limit_) return sequential_(begin, end);
        // The steps of the library's recursive_sort<0, false, false>, the first call of its sort.
        PointIterator m1, m3;
        const PointIterator m2 = CGAL::internal::hilbert_split(begin, end, Cmp<0, false>(traits_));
        on_two_cores([&] { m1 = CGAL::internal::hilbert_split(begin, m2, Cmp<1, false>(traits_)); },
                     [&] { m3 = CGAL::internal::hilbert_split(m2, end, Cmp<1, true>(traits_)); });
        on_two_cores(
            [&] {
                sequential_.template recursive_sort<1, false, false>(begin, m1);
                sequential_.template recursive_sort<0, false, false>(m1, m2);
            },
            [&] {
                sequential_.template recursive_sort<0, false, false>(m2, m3);
                sequential_.template recursive_sort<1, true, true>(m3, end);
            });
    }

private:
    template <int x, bool up>
    using Cmp = CGAL::internal::Hilbert_cmp_2<SortTraits, x, up>;

    /// Runs both pieces of work, the second on another thread when two may be used.
    template <class First, class Second>
    static void on_two_cores(First first, Second second) {
        for_blocks(
            2,
            [&](std::size_t from, std::size_t to) {
                for (std::size_t k = from; k < to; ++k) k == 0 ? first() : second();
            },
            1);
    }

    SortTraits traits_;
    CGAL::Hilbert_sort_median_2<SortTraits, CGAL::Sequential_tag> sequential_;
    std::ptrdiff_t limit_;
};

}  // namespace

void sort_in_curve_order(std::vector<NumberedPoint>& points) {
    // The library's spatial sort of points in plan, step by step: the same shuffle (its generator from
    // its own seed), the same thresholds, and the Hilbert sort on two cores.
    boost::rand48 random;
    boost::random_number_generator<boost::rand48, std::ptrdiff_t> generator(random);
    CGAL::cpp98::random_shuffle(points.begin(), points.end(), generator);
    constexpr std::ptrdiff_t hilbert_threshold = 4, multiscale_threshold = 16;
    constexpr double multiscale_ratio = 0.25;
    CGAL::Multiscale_sort<TwoCoreHilbertSort>(TwoCoreHilbertSort(SortTraits(), hilbert_threshold),
                                              multiscale_threshold, multiscale_ratio)(points.begin(), points.end());
}

namespace {

/// Inserts the points along a space-filling curve, each search starting from the point before, so
/// that every insertion walks a triangle or two. The numbered points themselves are sorted, not
/// indices into them: the sort and the insertion then walk memory in order, where an index map would
/// jump about a million points at random. The order is the one the library's own range insert takes
/// (the same shuffle and the same comparisons), so the triangles come out the same, and of two points
/// at one place the later in that order gives the vertex its number, as there.
void insert_in_curve_order(Delaunay& delaunay, std::vector<NumberedPoint>& points) {
    sort_in_curve_order(points);
    FaceHandle hint;
    for (const NumberedPoint& point : points) {
        const Delaunay::Vertex_handle vertex = delaunay.insert(Point(point.x, point.y), hint);
        if (vertex == Delaunay::Vertex_handle()) continue;
        vertex->info() = point.number;
        hint = vertex->face();
    }
}

// Barycentric weights taken relative to the first corner, so that map coordinates in the millions
// lose no digits that matter.
double linear_value(const FaceHandle& face, double x, double y, const double* z) {
    const Point& p0 = face->vertex(0)->point();
    const Point& p1 = face->vertex(1)->point();
    const Point& p2 = face->vertex(2)->point();
    const double ax = p1.x() - p0.x(), ay = p1.y() - p0.y();
    const double bx = p2.x() - p0.x(), by = p2.y() - p0.y();
    const double px = x - p0.x(), py = y - p0.y();
    const double area = ax * by - bx * ay;
    const double w1 = (px * by - bx * py) / area;
    const double w2 = (ax * py - px * ay) / area;
    const double z0 = z[face->vertex(0)->info()];
    return z0 + w1 * (z[face->vertex(1)->info()] - z0) + w2 * (z[face->vertex(2)->info()] - z0);
}

// A point on an edge takes the value along the edge, measured from its lower-numbered end: the
// same bits whichever of the edge's two faces the walk arrived in, so that walks from different
// places (one per thread) agree to the last digit.
double edge_value(const FaceHandle& face, int opposite, double x, double y, const double* z) {
    Delaunay::Vertex_handle a = face->vertex(Delaunay::ccw(opposite));
    Delaunay::Vertex_handle b = face->vertex(Delaunay::cw(opposite));
    if (b->info() < a->info()) std::swap(a, b);
    const double ex = b->point().x() - a->point().x(), ey = b->point().y() - a->point().y();
    const double t = ((x - a->point().x()) * ex + (y - a->point().y()) * ey) / (ex * ex + ey * ey);
    const double za = z[a->info()];
    return za + t * (z[b->info()] - za);
}

/// The value at (x, y) where the walk from `hint` finds it; `hint` moves to the face found.
double locate_and_interpolate(const Delaunay& delaunay, FaceHandle& hint, double x, double y, const double* z) {
    if (delaunay.dimension() < 2) return null_value;
    const Point point(x, y);
    Delaunay::Locate_type type;
    int index = 0;
    FaceHandle face = delaunay.locate(point, type, index, hint);
    if (face != FaceHandle()) hint = face;
    switch (type) {
        case Delaunay::VERTEX:
            return z[face->vertex(index)->info()];
        case Delaunay::EDGE:
            return edge_value(face, index, x, y, z);
        case Delaunay::FACE:
            return linear_value(face, x, y, z);
        default:  // outside the hull
            return null_value;
    }
}

}  // namespace

struct Triangulation::Impl {
    Delaunay delaunay;
    // Where the last point was found: the next search walks from here.
    mutable FaceHandle hint;

    double interpolate(double x, double y, const double* z) const {
        return locate_and_interpolate(delaunay, hint, x, y, z);
    }
};

struct Triangulation::Cursor::State {
    const Delaunay& delaunay;
    FaceHandle hint;
};

Triangulation::Cursor::Cursor(const Triangulation& triangulation)
    : state_(std::make_unique<State>(State{triangulation.impl_->delaunay, FaceHandle()})) {}
Triangulation::Cursor::~Cursor() = default;

double Triangulation::Cursor::interpolate(double x, double y, std::span<const double> z) {
    return locate_and_interpolate(state_->delaunay, state_->hint, x, y, z.data());
}

Triangulation::Triangulation() : impl_(std::make_unique<Impl>()) {}
Triangulation::~Triangulation() = default;
Triangulation::Triangulation(Triangulation&&) noexcept = default;
Triangulation& Triangulation::operator=(Triangulation&&) noexcept = default;

int Triangulation::build(std::span<const double> x, std::span<const double> y) {
    const std::size_t count = std::min(x.size(), y.size());
    std::vector<NumberedPoint> points;
    points.reserve(count);
    for (std::size_t k = 0; k < count; ++k)
        if (std::isfinite(x[k]) && std::isfinite(y[k])) points.push_back({x[k], y[k], static_cast<int>(k)});
    return build(std::move(points));
}

int Triangulation::build(std::vector<NumberedPoint>&& points) {
    clear();
    std::vector<NumberedPoint> sorted = std::move(points);
    insert_in_curve_order(impl_->delaunay, sorted);
    if (impl_->delaunay.dimension() < 2) {
        clear();
        return triangulation_colinear;
    }
    return 0;
}

void Triangulation::clear() {
    impl_->delaunay.clear();
    impl_->hint = FaceHandle();
}

bool Triangulation::empty() const { return impl_->delaunay.dimension() < 2; }

int Triangulation::triangle_count() const {
    return empty() ? 0 : static_cast<int>(impl_->delaunay.number_of_faces());
}

double Triangulation::interpolate(double x, double y, std::span<const double> z) const {
    return impl_->interpolate(x, y, z.data());
}

void Triangulation::interpolate_many(std::span<const double> x, std::span<const double> y, std::span<const double> z,
                                     std::span<double> values) const {
    const std::size_t count = std::min({x.size(), y.size(), values.size()});
    for_blocks(count, [&](std::size_t first, std::size_t last) {
        Cursor cursor(*this);
        for (std::size_t k = first; k < last; ++k) values[k] = cursor.interpolate(x[k], y[k], z);
    });
}

bool points_are_colinear(std::span<const double> x, std::span<const double> y) {
    const std::size_t count = std::min(x.size(), y.size());
    if (count < 3) return true;
    const Point first(x[0], y[0]);
    std::size_t k = 1;
    while (k < count && Point(x[k], y[k]) == first) ++k;
    if (k == count) return true;
    const Point second(x[k], y[k]);
    for (++k; k < count; ++k)
        if (CGAL::orientation(first, second, Point(x[k], y[k])) != CGAL::COLLINEAR) return false;
    return true;
}

bool points_are_colinear(std::span<const NumberedPoint> points) {
    const std::size_t count = points.size();
    if (count < 3) return true;
    const Point first(points[0].x, points[0].y);
    std::size_t k = 1;
    while (k < count && Point(points[k].x, points[k].y) == first) ++k;
    if (k == count) return true;
    const Point second(points[k].x, points[k].y);
    for (++k; k < count; ++k)
        if (CGAL::orientation(first, second, Point(points[k].x, points[k].y)) != CGAL::COLLINEAR) return false;
    return true;
}

int DELTRI(int count, const double* x, const double* y, Triangulation& triangulation, int& status) {
    const std::size_t size = count > 0 ? static_cast<std::size_t>(count) : 0;
    status = triangulation.build(std::span<const double>(x, size), std::span<const double>(y, size));
    return triangulation.triangle_count();
}

double TRIVAL(double x, double y, const double* z, int count, const Triangulation& triangulation) {
    return triangulation.interpolate(x, y, std::span<const double>(z, count > 0 ? static_cast<std::size_t>(count) : 0));
}

}  // namespace invsetup
