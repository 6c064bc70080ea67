// src/support/point_transform.cpp - rotation, scaling and shift between map and local coordinates.
#include "support/point_transform.h"

#include <cmath>
#include <utility>

#include "support/numbers.h"

namespace invsetup {

void clear_point_transform(PointTransform& transform) { transform = PointTransform{}; }

void update_point_transform(PointTransform& transform) {
    transform.cos_angle = std::cos(transform.angle * degrees_to_radians);
    transform.sin_angle = std::sin(transform.angle * degrees_to_radians);
    if (transform.x_scale == 0) transform.x_scale = 1;
    if (transform.y_scale == 0) transform.y_scale = 1;
    if (transform.z_scale == 0) transform.z_scale = 1;
    // Whole turns and rotations below one degree count as none: the angle is tested as an integer.
    transform.active = transform.local_x0 != transform.map_x0 || transform.local_y0 != transform.map_y0 ||
                       std::fabs(transform.x_scale - 1) > 1e-6 || std::fabs(transform.y_scale - 1) > 1e-6 ||
                       to_integer(std::fabs(transform.angle)) % 360 > 0.01 || transform.z_offset != 0 ||
                       std::fabs(transform.z_scale - 1) > 0.0001;
}

void apply_point_transform(const PointTransform& transform, int direction, double& x, double& y, double& z) {
    if (direction == map_to_local) {
        const double dx = x - transform.map_x0;
        const double dy = y - transform.map_y0;
        x = (dx * transform.cos_angle - dy * transform.sin_angle) / transform.x_scale + transform.local_x0;
        y = (dx * transform.sin_angle + dy * transform.cos_angle) / transform.y_scale + transform.local_y0;
        if (z > -1e30) z = z / transform.z_scale - transform.z_offset;
        return;
    }
    const double dx = (x - transform.local_x0) * transform.x_scale;
    const double dy = (y - transform.local_y0) * transform.y_scale;
    x = dx * transform.cos_angle + dy * transform.sin_angle + transform.map_x0;
    y = -dx * transform.sin_angle + dy * transform.cos_angle + transform.map_y0;
    if (z > -1e30) z = (z + transform.z_offset) * transform.z_scale;
}

void invert_point_transform(PointTransform& transform) {
    transform.angle = -transform.angle;
    transform.x_scale = transform.x_scale == 0 ? 1 : 1 / transform.x_scale;
    transform.y_scale = transform.y_scale == 0 ? 1 : 1 / transform.y_scale;
    std::swap(transform.local_x0, transform.map_x0);
    std::swap(transform.local_x1, transform.map_x1);
    std::swap(transform.local_y0, transform.map_y0);
    std::swap(transform.local_y1, transform.map_y1);
    if (transform.z_scale == 0) {
        transform.z_offset = -transform.z_offset;
        transform.z_scale = 1;
    } else {
        transform.z_offset = -transform.z_offset * transform.z_scale;
        transform.z_scale = 1 / transform.z_scale;
    }
}

}  // namespace invsetup
