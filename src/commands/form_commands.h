// src/commands/form_commands.h - the buttons and menu entries of the form as change handlers: a
// window presses a button by raising its change in the form model, and the platform's parts (a new
// process, a folder chooser, the two utility forms, closing) come back through a CommandHost.
#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "support/igrf.h"
#include "support/point_transform.h"

namespace invsetup {
struct Session;

/// What the form's commands ask of the window.
class CommandHost {
public:
    virtual ~CommandHost() = default;
    /// Starts `program` in `directory` as a new process, minimised and without waiting. False when
    /// it could not be started.
    virtual bool start_process(const std::filesystem::path& program, const std::filesystem::path& directory) = 0;
    /// A folder chooser; no value when cancelled.
    virtual std::optional<std::string> choose_directory(const std::string& title, const std::string& start) = 0;
    /// The reference field form: the person gives a date and place and gets the field. False when
    /// closed without values.
    virtual bool calculate_igrf(GeomagneticField& field) = 0;
    /// The point transform form on a working copy; false when cancelled.
    virtual bool define_point_transform(PointTransform& transform) = 0;
    /// Dir1 shows its folder anew (after a folder was made).
    virtual void refresh_directories() {}
    /// The form closes.
    virtual void close_form() {}
};

/// The commands' own state, one per window: whether a long command runs, so that a second can't
/// start meanwhile.
struct FormCommands {
    bool busy = false;
};

/// Registers the handlers of Command_create_inversion, Command_start_inversion, the directory
/// buttons, the utility buttons, Command_done_mag3d and the menu entries. `host` and `state` must
/// outlive the session's form.
void register_form_commands(Session& session, CommandHost& host, FormCommands& state);

/// Command_calculate_IGRF after the form gave `field`: asks "Copy the IGRF values?" and on Yes puts
/// intensity ("0.00"), inclination and declination ("0.000") into the field boxes.
void copy_igrf_values(Session& session, const GeomagneticField& field);

/// Command_define_coordinate_transform after the form: the definition's transform takes the edited
/// copy (when not cancelled), its derived values are brought up to date and the button turns red
/// while the transform is on.
void apply_coordinate_transform(Session& session, const PointTransform* edited);

/// Dir1's folder with Text_directory_name below it, after the tests of the create command.
/// Returns 0 when it exists or was made, -1 after a message.
int make_folder_command(Session& session);
/// Text_directory_name takes the last part of Dir1's folder.
void copy_directory_name_command(Session& session);
/// Dir1's folder becomes the working directory (kept, so that a following read doesn't go back).
void set_working_directory_command(Session& session, const std::string& directory);

/// The pointer and focus events a window passes on for a control: a click in a column box opens the
/// column name list over it, a double click in a file box opens its chooser, and leaving a box lets
/// the boxes that check on leaving (picture boxes, the line numbers of the data files) do so.
void click_control(Session& session, std::string_view name, int index);
void double_click_control(Session& session, std::string_view name, int index);
void leave_control(Session& session, std::string_view name, int index);

/// A click on an arrow of UpDown_clip(index): `up` or down; the tiling view is drawn again when the
/// overlay shows the change.
void spin_control(Session& session, int index, bool up);
/// The tooltip of UpDown_clip(index) in the overlay: 10 and 11 shift the region in standard mode
/// and change the tile overlap in refinement mode. Empty for the others.
std::string spin_tip(const Session& session, int index);
/// Command_view_tiling: the overlay with the spin controls, drawn after the definition's checks.
void view_tiling_command(Session& session);

/// menu_define_inversion_mode(index): 0 standard, 1 refinement; the menu offers the other mode.
void switch_inversion_mode(Session& session, int index);

}  // namespace invsetup
