// src/session.h - the state of one session of work: the form, the definition, the records of one
// creation and the person's dialogue. Operations take it by reference; nothing else is global, so a
// test may build as many sessions as it likes.
#pragma once
#include <filesystem>
#include <string>

#include "form/form_model.h"
#include "form/form_update.h"
#include "data/observed_data.h"
#include "data/progress_report.h"
#include "data/topography.h"
#include "form/inversion_definition.h"
#include "grids/grid_access.h"
#include "mesh/inversion_mesh.h"
#include "mesh/mesh_definition.h"
#include "mesh/tile_layout.h"
#include "mesh/tiling_view.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/model_file_read.h"
#include "support/dialogue.h"
#include "support/files.h"

namespace invsetup {

struct Session {
    /// Builds the form from its table and registers the form's change handlers.
    explicit Session(Dialogue& dialogue_port);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Dialogue& dialogue;
    FormModel form;
    InversionDefinition definition;
    ParameterRecord record;

    /// The process-wide working directory of the original design: relative names resolve here.
    std::filesystem::path working_directory;
    /// Set when the working directory moved on purpose, so that a read doesn't move it back.
    bool working_directory_changed = false;
    FileSearchMemory file_search;

    /// The mesh and model of refinement mode, by the names they were read from.
    std::string original_mesh_name;
    std::string original_model_name;

    /// The mesh of the current creation, its padding and its tiles; the mesh read for refinement.
    InversionMesh mesh;
    MeshPadding padding;
    TileTable tiles;
    ExpandedMesh expanded_mesh;
    /// The plan view of the mesh and its tiles (the tiling layout overlay).
    TilingView tiling_view;
    LoadedMesh loaded_mesh;
    LoadedModel loaded_model;

    /// Where the data stages report their progress (the form's progress controls).
    ProgressReport progress_report;

    /// The readings and the surface of the current creation.
    ObservationBins bins;
    ObservationList readings;
    Topography topography;
    /// Readings the last creation that read the observed data kept (its filled bins); -1 until one
    /// has. A package without any can't be inverted: the command line fails on it.
    int readings_kept = -1;

    /// The grid last read and the name of its temporary part.
    GridState grids;
};

}  // namespace invsetup
