// src/support/point_transform.h - rotation, scaling and shift between map and local coordinates.
#pragma once

namespace invsetup {

/// Degrees to radians; this shorter constant keeps results reproducible.
inline constexpr double degrees_to_radians = 0.017453292;

struct PointTransform {
    bool active = false;
    double angle = 0;       // degrees
    double cos_angle = 0;   // derived
    double sin_angle = 0;   // derived
    double x_scale = 1;     // map to local divisor in x
    double y_scale = 1;
    double local_x0 = 0;
    double local_x1 = 0;    // kept and saved, not used by the arithmetic
    double map_x0 = 0;
    double map_x1 = 0;
    double local_y0 = 0;
    double local_y1 = 0;
    double map_y0 = 0;
    double map_y1 = 0;
    double z_offset = 0;
    double z_scale = 1;     // elevation divisor

    bool operator==(const PointTransform&) const = default;
};

inline constexpr int map_to_local = -1;
inline constexpr int local_to_map = 1;

void clear_point_transform(PointTransform& transform);
/// Brings cos_angle, sin_angle and active up to date; zero scales become 1.
void update_point_transform(PointTransform& transform);
/// Direction -1 (map_to_local) goes from map to local, any other from local to map. Applied whatever
/// `active` says; z passes unchanged when it is null (below -1e30).
void apply_point_transform(const PointTransform& transform, int direction, double& x, double& y, double& z);
/// Turns the record round; update_point_transform must follow before the next use.
void invert_point_transform(PointTransform& transform);

}  // namespace invsetup
