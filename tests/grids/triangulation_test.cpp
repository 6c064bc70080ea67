// tests/grids/triangulation_test.cpp - Delaunay triangulation and linear interpolation in it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>
#include <vector>

#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Spatial_sort_traits_adapter_2.h>
#include <CGAL/property_map.h>
#include <CGAL/spatial_sort.h>

#include "grids/triangulation.h"
#include "support/numbers.h"

namespace {

using invsetup::DELTRI;
using invsetup::TRIVAL;
using invsetup::Triangulation;

double plane(double x, double y) { return 3.0 + 2.0 * x - 0.5 * y; }

struct Points {
    std::vector<double> x, y, z;
    void add(double px, double py, double pz) {
        x.push_back(px);
        y.push_back(py);
        z.push_back(pz);
    }
};

// A scatter that is not a grid, so that the triangles are of every shape.
Points plane_scatter(double x0, double y0) {
    Points points;
    for (int k = 0; k < 60; ++k) {
        const double x = x0 + (k * 37 % 101), y = y0 + (k * 53 % 97);
        points.add(x, y, plane(x - x0, y - y0));
    }
    for (double x : {x0, x0 + 100.0})
        for (double y : {y0, y0 + 100.0}) points.add(x, y, plane(x - x0, y - y0));
    return points;
}

TEST(Triangulation, LinearInterpolationReproducesAPlane) {
    for (double origin : {0.0, 6500000.0}) {  // also at map coordinates in the millions
        Points points = plane_scatter(origin, origin);
        Triangulation triangulation;
        int status = -1;
        const int triangles = DELTRI(static_cast<int>(points.x.size()), points.x.data(), points.y.data(),
                                     triangulation, status);
        ASSERT_EQ(status, 0);
        EXPECT_GT(triangles, 60);
        for (double qx : {0.5, 13.25, 50.0, 99.5})
            for (double qy : {0.25, 47.0, 99.0})
                EXPECT_NEAR(TRIVAL(origin + qx, origin + qy, points.z.data(), 64, triangulation), plane(qx, qy), 1e-7)
                    << qx << " " << qy;
    }
}

TEST(Triangulation, VerticesAndHullEdgesGiveTheirOwnValues) {
    Points points;
    points.add(0, 0, 10);
    points.add(10, 0, 20);
    points.add(0, 10, 30);
    points.add(10, 10, 60);
    Triangulation triangulation;
    ASSERT_EQ(triangulation.build(points.x, points.y), 0);
    EXPECT_DOUBLE_EQ(triangulation.interpolate(10, 10, points.z), 60.0);
    EXPECT_DOUBLE_EQ(triangulation.interpolate(5, 0, points.z), 15.0);   // on the hull's south edge
    EXPECT_DOUBLE_EQ(triangulation.interpolate(0, 2.5, points.z), 15.0);  // on the west edge
}

TEST(Triangulation, OutsideTheHullIsNull) {
    Points points = plane_scatter(0, 0);
    Triangulation triangulation;
    ASSERT_EQ(triangulation.build(points.x, points.y), 0);
    EXPECT_LT(triangulation.interpolate(-0.001, 50, points.z), -1e30);
    EXPECT_LT(triangulation.interpolate(50, 100.001, points.z), -1e30);
    EXPECT_LT(triangulation.interpolate(1e6, -1e6, points.z), -1e30);
    // And back inside after a search that ended outside.
    EXPECT_NEAR(triangulation.interpolate(50, 50, points.z), plane(50, 50), 1e-9);
}

TEST(Triangulation, PointsOnOneLineGiveTheColinearStatus) {
    Points points;
    for (int k = 0; k < 1000; ++k) points.add(k * 0.5, 100 + k * 0.25, k);
    Triangulation triangulation;
    int status = 0;
    EXPECT_EQ(DELTRI(1000, points.x.data(), points.y.data(), triangulation, status), 0);
    EXPECT_EQ(status, invsetup::triangulation_colinear);
    EXPECT_TRUE(triangulation.empty());
    EXPECT_LT(TRIVAL(1, 100.5, points.z.data(), 1000, triangulation), -1e30);
    EXPECT_TRUE(invsetup::points_are_colinear(points.x, points.y));

    // One point off the line is enough; repeated points alone are still no triangle.
    points.add(0, 101, 0);
    EXPECT_FALSE(invsetup::points_are_colinear(points.x, points.y));
    std::vector<double> same{4, 4, 4};
    EXPECT_TRUE(invsetup::points_are_colinear(same, same));
    EXPECT_EQ(triangulation.build(same, same), invsetup::triangulation_colinear);
}

TEST(Triangulation, BatchOfPointsMatchesOneByOne) {
    Points points = plane_scatter(0, 0);
    Triangulation triangulation;
    ASSERT_EQ(triangulation.build(points.x, points.y), 0);
    std::vector<double> qx{1, 99, 50, -5, 2}, qy{1, 99, 50, 5, 98}, values(5);
    triangulation.interpolate_many(qx, qy, points.z, values);
    for (std::size_t k = 0; k < qx.size(); ++k)
        EXPECT_DOUBLE_EQ(values[k], triangulation.interpolate(qx[k], qy[k], points.z)) << k;
    EXPECT_LT(values[3], -1e30);
}

TEST(Triangulation, TheCurveOrderIsTheLibrarysOnOneThreadAndTwo) {
    // Scattered points, a grid of repeated places and whole rows on one y: ties of every kind.
    std::vector<invsetup::NumberedPoint> points;
    for (int k = 0; k < 60000; ++k) {
        const double x = k % 3 == 0 ? 10.0 * (k % 70) : 500000 + (static_cast<long long>(k) * 7919 % 100003) * 0.37;
        const double y = k % 5 == 0 ? 6200000.0 : 6200000 + (static_cast<long long>(k) * 104729 % 99991) * 0.41;
        points.push_back({x, y, k});
    }
    using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
    std::vector<std::pair<Kernel::Point_2, int>> library;
    for (const auto& point : points) library.emplace_back(Kernel::Point_2(point.x, point.y), point.number);
    using Traits =
        CGAL::Spatial_sort_traits_adapter_2<Kernel, CGAL::First_of_pair_property_map<std::pair<Kernel::Point_2, int>>>;
    CGAL::spatial_sort(library.begin(), library.end(), Traits());
    for (const char* threads : {"1", "2"}) {
        SCOPED_TRACE(threads);
        setenv("INVSETUP_THREADS", threads, 1);
        std::vector<invsetup::NumberedPoint> sorted = points;
        invsetup::sort_in_curve_order(sorted);
        unsetenv("INVSETUP_THREADS");
        ASSERT_EQ(sorted.size(), library.size());
        std::size_t differ = 0;
        for (std::size_t k = 0; k < sorted.size(); ++k) differ += sorted[k].number != library[k].second;
        EXPECT_EQ(differ, 0u);
    }
}

}  // namespace
