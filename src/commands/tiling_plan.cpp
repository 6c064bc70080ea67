// src/commands/tiling_plan.cpp - the tiling layout painted into a picture.
#include "commands/tiling_plan.h"

#include "commands/data_pictures.h"
#include "form/tiling_tab.h"
#include "grids/plan_raster.h"
#include "session.h"
#include "support/files.h"
#include "support/text.h"

namespace invsetup {

namespace {

Rgba view_colour(std::uint32_t colour) {
    // The form's colour values hold red in the low byte.
    return Rgba{static_cast<std::uint8_t>(colour & 0xFF), static_cast<std::uint8_t>((colour >> 8) & 0xFF),
                static_cast<std::uint8_t>((colour >> 16) & 0xFF), 255};
}

/// The picture under the lines: the image file of the view, or the observed data.
void paint_background(const Session& session, const PictureFrame& frame, RgbaImage& image) {
    const ColourTable table = ColourTable::spectrum();
    const std::string image_file = trim(session.form.text("Text_image_file"));
    if (!image_file.empty()) {
        GridWindow grid;
        if (read_whole_grid(resolve_path(session.working_directory, image_file).string(), grid) == 0) {
            paint_grid(grid, frame, table, image);
            return;
        }
    }
    DataPicture data = load_data_picture(session, session.definition.obs_data_file_type == 1 ? 2 : 0);
    if (!data.grid.empty()) {
        paint_grid(data.grid, frame, table, image);
    } else if (!data.x.empty()) {
        // The readings come in mesh coordinates; a view on the map takes them back there.
        mesh_points_to_view(session.tiling_view, data.x, data.y);
        paint_points(data.x, data.y, data.values, frame, table, image, 3);
    }
}

}  // namespace

RgbaImage tiling_layout_picture(Session& session, int width, int height) {
    TilingView& view = session.tiling_view;
    view.width = width;
    view.height = height;
    draw_tiling_layout(session);
    RgbaImage image(width, height);
    if (!(view.view_scale > 0)) return image;
    PictureFrame frame;
    frame.x_min = view.view_x_min;
    frame.x_max = view.view_x_max;
    frame.y_min = view.view_y_min;
    frame.y_max = view.view_y_max;
    frame.scale = view.view_scale;
    frame.left = view.view_left;
    frame.top = view.view_top;
    paint_background(session, frame, image);

    std::vector<PictureLine> lines;
    lines.reserve(view.lines.size());
    for (const ViewLine& line : view.lines) {
        PictureLine out{line.x1, line.y1, line.x2, line.y2, view_colour(line.colour), line.width, 0, 0};
        if (line.style == LineStyle::dotted) {
            out.dash = 2;
            out.gap = 2;
        } else if (line.style == LineStyle::dashed) {
            out.dash = 8;
            out.gap = 4;
        }
        lines.push_back(out);
    }
    draw_picture_lines(image, lines);
    return image;
}

}  // namespace invsetup
