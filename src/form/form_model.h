// src/form/form_model.h - the form's controls by name and index, without any toolkit. The controls
// are declared once in a table (control_table.cpp); the window is generated from it and follows the
// model through change notifications.
#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace invsetup {

enum class ControlKind {
    text_box, list, check_box, option_button, label, frame, button, tabs, picture, grid_view,
    rich_text, progress_bar, status_line, spin, drive_list, directory_list, menu_entry
};

/// No index: the control is not part of a control array.
inline constexpr int no_index = -1;

/// One declared control. `text` is the design-time text (a text box's text, a caption); `rows` the
/// design-time rows of a list separated by "\n"; `meaning` the tooltip or what the control stands for.
struct ControlSpec {
    std::string_view name;
    int index;
    ControlKind kind;
    std::string_view text;
    std::string_view rows;
    std::string_view meaning;
    int tab;                  // 0..4 for Tab_inversion's pages, -1 for menus and overlays
    std::string_view frame;   // the containing frame, "" when on the tab itself
};

/// The declaration table of the whole form.
std::span<const ControlSpec> form_control_table();

struct ListRow {
    std::string text;
    int item_data = 0;
};

/// Colours as 0xBBGGRR. The system colours are named values the window maps to its palette.
inline constexpr std::uint32_t colour_red = 0x0000FF;
inline constexpr std::uint32_t colour_green = 0x00FF00;
inline constexpr std::uint32_t colour_window = 0x80000005;
inline constexpr std::uint32_t colour_button_face = 0x8000000F;

struct Control {
    const ControlSpec* declared = nullptr;  // the control's entry in the table
    std::string text;          // text box value
    int list_index = -1;       // list selection, -1 for none; also a tab container's selected tab
    bool checked = false;      // check box 0/1, option button true/false
    bool enabled = true;
    bool visible = true;
    std::string caption;
    std::uint32_t back_colour = colour_window;
    std::vector<ListRow> rows;
    int left = 0, top = 0;     // position, for the few moves the form makes
};

/// Which property of a control changed.
enum class ControlProperty { value, enabled, visible, caption, back_colour, rows, position };

class FormModel {
public:
    /// Builds every control of the table with its design-time state.
    FormModel();
    FormModel(const FormModel&) = delete;
    FormModel& operator=(const FormModel&) = delete;

    bool has_control(std::string_view name, int index = no_index) const;
    /// The control; an unknown name or index throws std::out_of_range.
    Control& control(std::string_view name, int index = no_index);
    const Control& control(std::string_view name, int index = no_index) const;
    /// Every control, in the order of the table.
    std::vector<const Control*> controls() const;

    // Values. Setting a value from program code raises the same change handling as a user's edit;
    // handlers that recompute things return at once while updating_form is set.
    const std::string& text(std::string_view name, int index = no_index) const;
    void set_text(std::string_view name, int index, std::string value);
    void set_text(std::string_view name, std::string value) { set_text(name, no_index, std::move(value)); }
    int list_index(std::string_view name, int index = no_index) const;
    void set_list_index(std::string_view name, int index, int row);
    void set_list_index(std::string_view name, int row) { set_list_index(name, no_index, row); }
    /// Item data of the selected row; -1 when nothing is selected.
    int selected_item_data(std::string_view name, int index = no_index) const;
    /// Check box on (1) or option button true.
    bool checked(std::string_view name, int index = no_index) const;
    void set_checked(std::string_view name, int index, bool on);
    void set_checked(std::string_view name, bool on) { set_checked(name, no_index, on); }

    // Appearance; changes are notified, never handled.
    void set_enabled(std::string_view name, int index, bool on);
    void set_enabled(std::string_view name, bool on) { set_enabled(name, no_index, on); }
    void set_visible(std::string_view name, int index, bool on);
    void set_visible(std::string_view name, bool on) { set_visible(name, no_index, on); }
    void set_caption(std::string_view name, int index, std::string caption);
    void set_caption(std::string_view name, std::string caption) { set_caption(name, no_index, std::move(caption)); }
    void set_back_colour(std::string_view name, int index, std::uint32_t colour);
    void move_to(std::string_view name, int index, int left, int top);

    // List rows.
    void clear_rows(std::string_view name, int index = no_index);  // also clears the selection
    void add_row(std::string_view name, int index, std::string text, int item_data = 0);
    int row_count(std::string_view name, int index = no_index) const;
    int item_data(std::string_view name, int index, int row) const;
    void set_item_data(std::string_view name, int index, int row, int item_data);
    /// Selects the first row whose item data equals `code` after setting the index to -1; stays -1
    /// when none matches. Runs the change handling like any selection.
    void select_item_data(std::string_view name, int index, int code);

    /// Set while program code writes many controls.
    bool updating_form = false;

    // Change handling. A handler gets the index of the control that changed.
    using ChangeHandler = std::function<void(int index)>;
    /// Registers the handler of a control name (all indices of a control array share it).
    void on_change(std::string_view name, ChangeHandler handler);
    /// Runs the change handling of a control as a user's edit would.
    void raise_change(std::string_view name, int index = no_index);

    // Notifications for a window that mirrors the model.
    using Observer = std::function<void(const Control&, ControlProperty)>;
    int subscribe(Observer observer);
    void unsubscribe(int id);

private:
    struct Key {
        std::string name;
        int index;
    };
    struct KeyLess {
        using is_transparent = void;
        template <class A, class B>
        bool operator()(const A& a, const B& b) const {
            return std::string_view(a.name) < std::string_view(b.name) ||
                   (std::string_view(a.name) == std::string_view(b.name) && a.index < b.index);
        }
    };
    struct KeyView {
        std::string_view name;
        int index;
    };
    Control& find(std::string_view name, int index) const;
    void notify(const Control& control, ControlProperty property);

    std::map<Key, Control, KeyLess> controls_;
    std::vector<const Control*> order_;
    std::map<std::string, ChangeHandler, std::less<>> handlers_;
    std::vector<std::pair<int, Observer>> observers_;
    int next_observer_ = 1;
};

}  // namespace invsetup
