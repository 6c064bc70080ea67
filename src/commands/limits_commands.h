// src/commands/limits_commands.h - the mesh limits from the extent of a data file.
#pragma once

namespace invsetup {
struct Session;

/// "Set Limits from Data" (index 0, observed data: the X and Y limits and the regional base) and
/// "Set Limits from Data File" (index 1, topography: the Z limits and the depth), then the mesh
/// group of the form is shown again. Returns 0, or -1 after a message.
int Command_set_limits_from_file(Session& session, int index);

/// Registers the handler of the two set-limits buttons.
void register_limits_commands(Session& session);

}  // namespace invsetup
