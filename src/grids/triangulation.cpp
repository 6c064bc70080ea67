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
#include <CGAL/Triangulation_vertex_base_with_info_2.h>

#include "support/numbers.h"

namespace invsetup {

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Point = Kernel::Point_2;
using VertexBase = CGAL::Triangulation_vertex_base_with_info_2<int, Kernel>;  // info: the point's number
using FaceBase = CGAL::Triangulation_face_base_2<Kernel>;
using DataStructure = CGAL::Triangulation_data_structure_2<VertexBase, FaceBase>;
using Delaunay = CGAL::Delaunay_triangulation_2<Kernel, DataStructure>;
using FaceHandle = Delaunay::Face_handle;

}  // namespace

struct Triangulation::Impl {
    Delaunay delaunay;
    // Where the last point was found: the next search walks from here.
    mutable FaceHandle hint;

    double interpolate(double x, double y, const double* z) const {
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
                // A point on the hull's edge is found in the infinite face beyond it.
                if (delaunay.is_infinite(face)) face = face->neighbor(index);
                break;
            case Delaunay::FACE:
                break;
            default:  // outside the hull
                return null_value;
        }
        return linear_value(face, x, y, z);
    }

    // Barycentric weights taken relative to the first corner, so that map coordinates in the
    // millions lose no digits that matter.
    static double linear_value(const FaceHandle& face, double x, double y, const double* z) {
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
};

Triangulation::Triangulation() : impl_(std::make_unique<Impl>()) {}
Triangulation::~Triangulation() = default;
Triangulation::Triangulation(Triangulation&&) noexcept = default;
Triangulation& Triangulation::operator=(Triangulation&&) noexcept = default;

int Triangulation::build(std::span<const double> x, std::span<const double> y) {
    clear();
    const std::size_t count = std::min(x.size(), y.size());
    std::vector<std::pair<Point, int>> points;
    points.reserve(count);
    for (std::size_t k = 0; k < count; ++k)
        if (std::isfinite(x[k]) && std::isfinite(y[k])) points.emplace_back(Point(x[k], y[k]), static_cast<int>(k));
    // The range insert sorts the points along a space-filling curve first: each insertion then
    // starts next to the last one, and a million points take well under a second.
    impl_->delaunay.insert(points.begin(), points.end());
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
    for (std::size_t k = 0; k < count; ++k) values[k] = impl_->interpolate(x[k], y[k], z.data());
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

int DELTRI(int count, const double* x, const double* y, Triangulation& triangulation, int& status) {
    const std::size_t size = count > 0 ? static_cast<std::size_t>(count) : 0;
    status = triangulation.build(std::span<const double>(x, size), std::span<const double>(y, size));
    return triangulation.triangle_count();
}

double TRIVAL(double x, double y, const double* z, int count, const Triangulation& triangulation) {
    return triangulation.interpolate(x, y, std::span<const double>(z, count > 0 ? static_cast<std::size_t>(count) : 0));
}

}  // namespace invsetup
