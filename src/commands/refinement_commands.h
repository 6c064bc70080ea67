// src/commands/refinement_commands.h - the file menu's reads of an existing inversion: its mesh, which
// turns refinement mode on, and the model that belongs to it.
#pragma once

namespace invsetup {
struct Session;

/// menu_read_inversion_mesh: asks for a mesh file (starting in the folder of the last one), clears
/// the mesh and model held, keeps the name as the original mesh name and reads the mesh. On success
/// the mesh's limits, cell sizes and counts go into the mesh fields, refinement mode is on and "The
/// mesh file has been loaded and refinement mode is enabled" is shown. Returns 0 when read, 1 when
/// the chooser was cancelled, -1 after the reader's message (or, for a voxet or VTK file, silently).
int read_inversion_mesh_command(Session& session);

/// menu_read_inversion_model: needs the mesh ("No mesh file has been specified", "The specified mesh
/// file does not exist"), asks for a model file (starting in the last model's folder, else the
/// mesh's) and loads it onto the mesh, keeping its name as the original model name. Returns 0 when
/// read, 1 when cancelled, -1 after a message.
int read_inversion_model_command(Session& session);

}  // namespace invsetup
