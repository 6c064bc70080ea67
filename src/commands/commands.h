// src/commands/commands.h - the file menu's read and save of a parameter file.
#pragma once

namespace invsetup {
struct Session;

/// The caption of the main form and the prefix it takes when a definition file is read.
inline constexpr const char* form_caption_prefix = "3D inversion setup: ";

/// Asks for a definition file and reads it, any version, into session.record, then loads `group`
/// of it into the form (0 all, 1 inversion parameters, 2 observed data, 3 topo data, 4 mesh).
/// Returns 0 when read, 1 when the person cancelled the chooser, -1 after a message (a missing or
/// empty file, a file the older reader refuses, or a fault while reading). While the file is read
/// the working directory is the file's folder, as a file dialogue leaves it; afterwards it goes back
/// unless it was moved on purpose meanwhile.
int read_command(Session& session, int group);

/// Checks the definition (check_inversion_definitions), then choose_and_save_parameter_file.
/// Returns 0 when saved, 1 when the person cancelled or declined to overwrite, -1 after a message.
int save_command(Session& session);
/// The dialogue part of save_command: asks for a file name (".inp" added when it has no extension),
/// asks before replacing a file, and saves session.definition with the form's description. The
/// working directory is put back afterwards. Returns as save_command.
int choose_and_save_parameter_file(Session& session);

}  // namespace invsetup
