// src/form/control_layout.h - where the controls of the table stand in a window: the arrangement of
// each tab page and frame, and the captions of boxes that have no label control of their own. The
// table (control_table.cpp) says which frame holds a control; this says where in the frame.
#pragma once
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "form/form_model.h"

namespace invsetup {

/// How a container arranges its cells: a grid of rows and columns (frames), or columns of items
/// stacked from the top (tab pages), where a row of items stands side by side.
enum class LayoutStyle { grid, columns };

/// One cell. A control cell names a control; a caption cell (`control` empty) shows `caption` and
/// stands for the control named by `names` (the next control of its row), whose visibility and
/// enabling it follows. Several controls in one cell share the place: the last visible one shows.
struct LayoutCell {
    std::vector<std::pair<std::string, int>> controls;  // name and index, one or more
    std::string caption;
    std::pair<std::string, int> names{"", no_index};
    int row = 0;
    int column = 0;
    int row_span = 1;
    int column_span = 1;
    int side = 0;  // stacked columns: the place within a row of items standing side by side
};

struct ContainerLayout {
    std::string key;      // a frame as the table names it ("Frame_magsen3d(0)"), or "<tabs>#<page>"
    LayoutStyle style = LayoutStyle::grid;
    std::vector<LayoutCell> cells;
    int row_count = 0;
    int column_count = 0;
};

/// Every container's arrangement, parsed from the layout table. A control named in no layout and
/// not floating has no place in a window.
const std::vector<ContainerLayout>& form_layouts();

/// The arrangement of one container, or nullptr when it has none.
const ContainerLayout* find_layout(std::string_view key);

/// The container key of a page of a tab control: "Tab_inversion#0".
std::string tab_page_key(std::string_view tabs, int page);

/// Controls laid over others on demand rather than placed (the column name lists, which open over
/// the column box clicked): they start hidden and show only when the form shows them.
bool is_floating_control(std::string_view name);

/// Text boxes of many lines that show what the program writes (the data file preview, the progress
/// of a creation): a window shows them read-only, in a fixed-pitch font.
bool is_multi_line_control(std::string_view name);

/// The frame key of a control entry: name, with "(index)" when it is part of an array.
std::string control_key(std::string_view name, int index);

}  // namespace invsetup
