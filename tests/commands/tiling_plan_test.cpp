// tests/commands/tiling_plan_test.cpp - the tiling layout of a 2 x 2 refinement (the fixture of the
// tiled-run test) in a 600 x 500 picture: its line list, the pointer, the tile choice, the spin
// controls, and the view on the map with the point transform on. The region is the whole mesh, 1000 to 1600 by 2000 to 2600: 480 pixels square at a
// scale of 0.8, 60 pixels from the left and 10 from the top.
#include "commands/tiling_plan.h"

#include <gtest/gtest.h>

#include "commands/commands.h"
#include "commands/create_commands.h"
#include "commands/refinement_commands.h"
#include "form/form_load.h"
#include "form/tiling_tab.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

constexpr std::uint32_t black = view_colour_default, red = view_colour_red, blue = view_colour_blue;

class TilingLayout : public ::testing::Test {
protected:
    void SetUp() override {
        const auto fixture = testing::test_data("refine") / "ubc";
        session.working_directory = fixture;
        initialise_inversion_form(session);
        dialogue.file_answers.push_back((fixture / "coarse.msh").string());
        ASSERT_EQ(read_inversion_mesh_command(session), 0);
        dialogue.file_answers.push_back((fixture / "refine.inp").string());
        ASSERT_EQ(read_command(session, 0), 0);
        session.tiling_view.width = 600;
        session.tiling_view.height = 500;
        session.tiling_view.tile_choice = true;
        ASSERT_EQ(display_tiling_layout(session, 0), 0);
    }
    HeadlessDialogue dialogue;
    Session session{dialogue};
    const TilingView& view = session.tiling_view;
};

TEST_F(TilingLayout, DrawsFrameCoreTilesAndTheSwitchedOffTile) {
    EXPECT_DOUBLE_EQ(view.view_scale, 0.8);
    EXPECT_DOUBLE_EQ(view.view_left, 60);
    EXPECT_DOUBLE_EQ(view.view_top, 10);
    ASSERT_TRUE(switch_tile_off(session, 2, 1));
    // 4 frame, 4 core, 4 tiled region, 2 x (2 core + 2 outer) per axis, 2 diagonals.
    ASSERT_EQ(view.lines.size(), 30u);
    const std::vector<ViewLine> expected_lines = {
        {60, 10, 540, 10, black, 1, LineStyle::solid},        // the frame's top
        {140, 410, 460, 410, red, 1, LineStyle::dotted},      // the refined area's south side: 1100 to 1500
        {140, 410, 420, 410, red, 1, LineStyle::dashed},      // the tiled region's south side
        {140, 410, 140, 130, red, 1, LineStyle::solid},       // tile 1's core start, x 1100
        {340, 410, 340, 130, blue, 2, LineStyle::solid},      // tile 1's outer end, x 1350
        {140, 250, 420, 250, red, 1, LineStyle::solid},       // the y cores meet at 2300
        {300, 410, 420, 250, red, 1, LineStyle::solid},       // tile (2, 1) crossed out
        {300, 250, 420, 410, red, 1, LineStyle::solid},
    };
    for (const ViewLine& line : expected_lines)
        EXPECT_NE(std::find(view.lines.begin(), view.lines.end(), line), view.lines.end())
            << line.x1 << "," << line.y1 << " " << line.x2 << "," << line.y2;
}

TEST_F(TilingLayout, PointerFindsTheTileAndAClickMarksIt) {
    tiling_pointer_move(session, 360, 330);  // 1375, 2200
    EXPECT_EQ(view.panels[0], "1375.0");
    EXPECT_EQ(view.panels[1], "2200.0");
    EXPECT_EQ(view.panels[4], "7,4 T0201");
    EXPECT_EQ(view.panels[5], "4 x 5");
    tiling_mouse_up(session);
    EXPECT_EQ(session.form.control("Check_do_tile").caption, "Skip Tile X02 Y01");
    EXPECT_FALSE(session.form.checked("Check_do_tile"));
    session.form.set_checked("Check_do_tile", true);
    tiling_check_do_tile(session);
    EXPECT_EQ(session.tiles.tile_skip(2, 1), 1);
    EXPECT_EQ(view.lines.size(), 30u);
    // Unmarked, the diagonals go with the next drawing.
    session.form.set_checked("Check_do_tile", false);
    tiling_check_do_tile(session);
    EXPECT_EQ(view.lines.size(), 28u);

    // Outside the tiled region: no tile, the totals, and a click keeps the chosen tile.
    tiling_pointer_move(session, 70, 20);
    EXPECT_EQ(view.hover_tile_x, 0);
    EXPECT_EQ(view.panels[5], "10,10");
    tiling_mouse_up(session);
    EXPECT_EQ(view.chosen_tile_x, 2);
}

TEST_F(TilingLayout, WithThePointTransformTheViewIsOnTheMap) {
    // Mesh point (x, y) on the map, then in pixels: a shift keeps the layout; a quarter turn about
    // the mesh's south-west corner puts (x, y) at (60 + 0.8 (y - 2000), 10 + 0.8 (x - 1000)); a half
    // turn about its middle at (60 + 0.8 (1600 - x), 10 + 0.8 (y - 2000)). The cells under the
    // pointer count the mesh's nodes 1000, 1100, 1150 ... 1500, 1600 (y from 2000 alike).
    struct Case {
        const char* name;
        double angle, local_x0, local_y0, map_x0, map_y0;
        std::vector<ViewLine> lines;  // tile 1's core start and outer end, the y cores' meeting, the core's south side
        double pointer_x, pointer_y;
        std::array<std::string, 5> panels;
    };
    const std::vector<Case> cases = {
        {"shift", 0, 0, 0, 500000, 7000000,
         {{140, 410, 140, 130, red, 1, LineStyle::solid}, {340, 410, 340, 130, blue, 2, LineStyle::solid},
          {140, 250, 420, 250, red, 1, LineStyle::solid}, {140, 410, 460, 410, red, 1, LineStyle::dotted}},
         360, 330, {"1375.0", "2200.0", "501375.0", "7002200.0", "7,4 T0201"}},
        {"quarter turn", 90, 1000, 2000, 500000, 7000000,
         {{140, 90, 420, 90, red, 1, LineStyle::solid}, {140, 290, 420, 290, blue, 2, LineStyle::solid},
          {300, 90, 300, 370, red, 1, LineStyle::solid}, {140, 90, 140, 410, red, 1, LineStyle::dotted}},
         364, 334, {"1405.0", "2380.0", "500380.0", "6999595.0", "8,7 T0202"}},
        {"half turn", 180, 1300, 2300, 1300, 2300,
         {{460, 90, 460, 370, red, 1, LineStyle::solid}, {260, 90, 260, 370, blue, 2, LineStyle::solid},
          {460, 250, 180, 250, red, 1, LineStyle::solid}, {460, 90, 140, 90, red, 1, LineStyle::dotted}},
         360, 334, {"1225.0", "2405.0", "1375.0", "2195.0", "4,8 T0102"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        PointTransform& transform = session.definition.coordinate_transform;
        transform.angle = c.angle;
        transform.local_x0 = c.local_x0;
        transform.local_y0 = c.local_y0;
        transform.map_x0 = c.map_x0;
        transform.map_y0 = c.map_y0;
        update_point_transform(transform);
        ASSERT_EQ(display_tiling_layout(session, 1), 0);
        EXPECT_NEAR(view.view_scale, 0.8, 1e-6);  // the short degree constant turns a little less or more
        EXPECT_NEAR(view.view_left, 60, 1e-6);
        EXPECT_NEAR(view.view_top, 10, 1e-6);
        for (const ViewLine& line : c.lines) {
            const auto near = [&line](const ViewLine& drawn) {
                return std::abs(drawn.x1 - line.x1) < 1e-3 && std::abs(drawn.y1 - line.y1) < 1e-3 &&
                       std::abs(drawn.x2 - line.x2) < 1e-3 && std::abs(drawn.y2 - line.y2) < 1e-3 &&
                       drawn.colour == line.colour && drawn.width == line.width && drawn.style == line.style;
            };
            EXPECT_TRUE(std::any_of(view.lines.begin(), view.lines.end(), near))
                << line.x1 << "," << line.y1 << " " << line.x2 << "," << line.y2;
        }
        tiling_pointer_move(session, c.pointer_x, c.pointer_y);
        for (std::size_t k = 0; k < 5; ++k) EXPECT_EQ(view.panels[k], c.panels[k]) << k;
    }
    // The readings stand at their map place under the turned lines: the one at 1125, 2275 (a map
    // point, 1475, 2325 in the turned mesh) where it was, not where its mesh point would fall; tile
    // 1's outer end now at x 260.
    const RgbaImage image = tiling_layout_picture(session, 600, 500);
    const Rgba white{255, 255, 255, 255};
    EXPECT_NE(image.at(160, 270), white);
    EXPECT_EQ(image.at(440, 230), white);
    EXPECT_EQ(image.at(260, 200), (Rgba{0, 0, 255, 255}));
}

TEST_F(TilingLayout, SpinsMoveTheOverlapOrALimitByTheLoadedCell) {
    EXPECT_TRUE(tiling_spin(session, 10, true));
    EXPECT_EQ(session.definition.tile_overlap, 2);
    EXPECT_EQ(session.form.text("Text_tile_overlap"), "2");
    EXPECT_EQ(session.form.text("Text_min_val", 0), "1100");
    // The X minimum down by one loaded cell: two refined cells of 50.
    EXPECT_FALSE(tiling_spin(session, 4, false));
    EXPECT_EQ(session.form.text("Text_min_val", 0), "1000");
    EXPECT_EQ(session.form.text("Text_num_cells", 0), "10");
    EXPECT_EQ(session.form.text("Text_max_val", 3), "500");
}

TEST_F(TilingLayout, PictureHasTheLinesOverTheReadings) {
    ASSERT_TRUE(switch_tile_off(session, 2, 1));
    const RgbaImage image = tiling_layout_picture(session, 600, 500);
    ASSERT_EQ(image.width, 600);
    EXPECT_EQ(image.at(20, 20), (Rgba{255, 255, 255, 255}));  // outside the frame
    EXPECT_EQ(image.at(60, 250), (Rgba{0, 0, 0, 255}));       // the frame's west side
    EXPECT_EQ(image.at(340, 300), (Rgba{0, 0, 255, 255}));    // tile 1's outer end
    EXPECT_EQ(image.at(360, 330), (Rgba{255, 0, 0, 255}));    // the cross on tile (2, 1)
    EXPECT_NE(image.at(160, 390), (Rgba{255, 255, 255, 255})); // the reading at 1125, 2125
}

}  // namespace
}  // namespace invsetup
