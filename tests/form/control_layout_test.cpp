// tests/form/control_layout_test.cpp - the window arrangement against the control table: every
// control has exactly one place, in the container the table puts it in, and captions name boxes.
#include "form/control_layout.h"

#include <gtest/gtest.h>

#include <map>

namespace invsetup {
namespace {

/// The container a control belongs in: its frame, a page of a tab control, or the tab page itself.
bool placed_in_its_container(const ControlSpec& entry, const std::string& container) {
    if (entry.frame.empty()) return container == tab_page_key("Tab_inversion", entry.tab);
    if (entry.frame == "Tab_images") return container.rfind("Tab_images#", 0) == 0;
    return container == entry.frame;
}

bool needs_a_place(const ControlSpec& entry) {
    if (entry.kind == ControlKind::menu_entry) return false;
    if (entry.name == "Form_mag3d" || entry.name == "Tab_inversion" || entry.name == "Frame_tiling_layout") return false;
    return !is_floating_control(entry.name);
}

TEST(ControlLayout, EveryControlHasExactlyOnePlaceInTheContainerTheTableNames) {
    std::map<std::string, std::vector<std::string>> places;  // control key -> containers
    for (const ContainerLayout& layout : form_layouts())
        for (const LayoutCell& cell : layout.cells)
            for (const auto& [name, index] : cell.controls) places[control_key(name, index)].push_back(layout.key);

    for (const ControlSpec& entry : form_control_table()) {
        const std::string key = control_key(entry.name, entry.index);
        const auto found = places.find(key);
        if (!needs_a_place(entry)) {
            EXPECT_EQ(found, places.end()) << key << " is not placed";
            continue;
        }
        ASSERT_NE(found, places.end()) << key << " has no place";
        ASSERT_EQ(found->second.size(), 1u) << key << " is placed twice";
        EXPECT_TRUE(placed_in_its_container(entry, found->second.front()))
            << key << " placed in " << found->second.front() << " instead of " << entry.frame;
        places.erase(found);
    }
    for (const auto& [key, containers] : places) ADD_FAILURE() << key << " in " << containers.front() << " is no control";
}

TEST(ControlLayout, CaptionsNameTheBoxBesideThemAndSharedPlacesKeepTheirOrder) {
    struct Case {
        const char* container;
        const char* caption;
        const char* names;
        int index;
    };
    const Case cases[] = {
        {"Frame_field", "Intensity (nT)", "Text_mag_intensity", no_index},
        {"Frame1", "Extra type", "Combo_optional_data_type", 0},
        {"Frame_xmesh", "Minimum", "Text_min_val", 0},
        {"Tab_inversion#4", "Directory name", "Text_directory_name", no_index},
        {"Frame_mesh_sizes", "Minimum", "", no_index},  // a column heading names nothing
    };
    for (const Case& c : cases) {
        const ContainerLayout* layout = find_layout(c.container);
        ASSERT_NE(layout, nullptr) << c.container;
        const LayoutCell* caption = nullptr;
        for (const LayoutCell& cell : layout->cells)
            if (cell.caption == c.caption) caption = &cell;
        ASSERT_NE(caption, nullptr) << c.caption;
        EXPECT_EQ(caption->names.first, c.names) << c.caption;
        if (*c.names) {
            EXPECT_EQ(caption->names.second, c.index) << c.caption;
        }
    }

    const ContainerLayout* parameters = find_layout("Tab_inversion#0");
    ASSERT_NE(parameters, nullptr);
    EXPECT_EQ(parameters->style, LayoutStyle::columns);
    EXPECT_EQ(parameters->column_count, 3);
    const LayoutCell& shared = parameters->cells[4];  // first item of the second column
    ASSERT_EQ(shared.controls.size(), 2u);
    EXPECT_EQ(shared.controls[0].first, "Frame_field");
    EXPECT_EQ(shared.controls[1].first, "Frame_gravity_parameters");
    EXPECT_EQ(shared.column, 1);
    EXPECT_EQ(shared.row, 0);

    const ContainerLayout* maginv = find_layout("Frame_maginv");
    ASSERT_NE(maginv, nullptr);
    EXPECT_EQ(maginv->column_count, 3);
    EXPECT_EQ(maginv->cells[1].column_span, 2);  // Text_inversion_par*2
}

}  // namespace
}  // namespace invsetup
