// tests/support/point_transform_test.cpp - map and local coordinates.
#include "support/point_transform.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/numbers.h"

using namespace invsetup;

namespace {

PointTransform rotated_grid() {
    PointTransform transform;
    transform.angle = 30;
    transform.map_x0 = 500000;
    transform.map_y0 = 6100000;
    transform.local_x0 = 1000;
    transform.local_y0 = 2000;
    transform.x_scale = 2;
    transform.y_scale = 0.5;
    transform.z_offset = 100;
    transform.z_scale = 0.3048;
    update_point_transform(transform);
    return transform;
}

bool is_active_with(void (*change)(PointTransform&)) {
    PointTransform transform;
    change(transform);
    update_point_transform(transform);
    return transform.active;
}

}  // namespace

TEST(PointTransform, WholeTurnsAndFractionsOfADegreeAreNotActive) {
    EXPECT_FALSE(is_active_with([](PointTransform&) {}));
    EXPECT_FALSE(is_active_with([](PointTransform& t) { t.angle = -720; }));
    EXPECT_FALSE(is_active_with([](PointTransform& t) { t.angle = 0.5; }));  // half to even: 0
    EXPECT_TRUE(is_active_with([](PointTransform& t) { t.angle = 1.5; }));
    EXPECT_TRUE(is_active_with([](PointTransform& t) { t.angle = -90; }));
}

TEST(PointTransform, SmallScaleChangesAreNotActive) {
    EXPECT_FALSE(is_active_with([](PointTransform& t) { t.x_scale = 1 + 1e-7; }));
    EXPECT_TRUE(is_active_with([](PointTransform& t) { t.y_scale = 1 + 1e-5; }));
    EXPECT_FALSE(is_active_with([](PointTransform& t) { t.z_scale = 1.00005; }));
    EXPECT_TRUE(is_active_with([](PointTransform& t) { t.z_offset = 0.001; }));
    EXPECT_FALSE(is_active_with([](PointTransform& t) { t.local_x1 = 5; }));
}

TEST(PointTransform, ZeroScalesBecomeOne) {
    PointTransform transform;
    transform.x_scale = transform.y_scale = transform.z_scale = 0;
    update_point_transform(transform);
    EXPECT_EQ(transform.x_scale, 1);
    EXPECT_EQ(transform.y_scale, 1);
    EXPECT_EQ(transform.z_scale, 1);
    EXPECT_FALSE(transform.active);
}

// A cleared record has cos_angle 0: applied before an update, both axes collapse.
TEST(PointTransform, ClearedRecordNeedsAnUpdateBeforeUse) {
    PointTransform transform = rotated_grid();
    clear_point_transform(transform);
    EXPECT_EQ(transform, PointTransform{});
    double x = 10, y = 20, z = 30;
    apply_point_transform(transform, map_to_local, x, y, z);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
    update_point_transform(transform);
    x = 10, y = 20;
    apply_point_transform(transform, map_to_local, x, y, z);
    EXPECT_EQ(x, 10);
    EXPECT_EQ(y, 20);
}

TEST(PointTransform, MapToLocalRotatesShiftsAndScales) {
    PointTransform transform;
    transform.angle = 90;
    transform.map_x0 = 100;
    transform.local_x0 = 10;
    transform.x_scale = 2;
    update_point_transform(transform);
    double x = 100, y = 4, z = 50;
    apply_point_transform(transform, map_to_local, x, y, z);
    // dx 0, dy 4: x = -4 * sin 90 / 2 + 10, y = 4 * cos 90 (not quite 0 with the short constant)
    EXPECT_NEAR(x, 8, 1e-9);
    EXPECT_NEAR(y, 0, 1e-6);
    EXPECT_EQ(z, 50);
}

TEST(PointTransform, LocalToMapUndoesMapToLocal) {
    const PointTransform transform = rotated_grid();
    double x = 512345.25, y = 6098765.5, z = 420;
    apply_point_transform(transform, map_to_local, x, y, z);
    EXPECT_GT(std::abs(x - 512345.25), 1);
    apply_point_transform(transform, local_to_map, x, y, z);
    EXPECT_NEAR(x, 512345.25, 1e-6);
    EXPECT_NEAR(y, 6098765.5, 1e-6);
    EXPECT_NEAR(z, 420, 1e-9);
}

TEST(PointTransform, NullElevationPassesBothWays) {
    const PointTransform transform = rotated_grid();
    double x = 1, y = 2, z = null_value;
    apply_point_transform(transform, map_to_local, x, y, z);
    EXPECT_EQ(z, null_value);
    apply_point_transform(transform, 7, x, y, z);
    EXPECT_EQ(z, null_value);
}

TEST(PointTransform, InvertedRecordGoesTheOtherWay) {
    PointTransform transform = rotated_grid();
    transform.y_scale = 2;  // the inverse swaps the order of scaling and turning: equal scales only
    update_point_transform(transform);
    transform.local_x1 = 3;
    PointTransform inverse = transform;
    invert_point_transform(inverse);
    EXPECT_EQ(inverse.map_x1, 3);                       // the second pair changes places too
    EXPECT_EQ(inverse.cos_angle, transform.cos_angle);  // left for the update
    update_point_transform(inverse);
    double x1 = 1500, y1 = 2500, z1 = 80;
    double x2 = x1, y2 = y1, z2 = z1;
    apply_point_transform(transform, local_to_map, x1, y1, z1);
    apply_point_transform(inverse, map_to_local, x2, y2, z2);
    EXPECT_NEAR(x1, x2, 1e-6);
    EXPECT_NEAR(y1, y2, 1e-6);
    EXPECT_NEAR(z1, z2, 1e-9);
}

TEST(PointTransform, InvertingAZeroZScaleOnlyTurnsTheOffset) {
    PointTransform transform;
    transform.z_offset = 12;
    transform.z_scale = 0;
    invert_point_transform(transform);
    EXPECT_EQ(transform.z_offset, -12);
    EXPECT_EQ(transform.z_scale, 1);
}
