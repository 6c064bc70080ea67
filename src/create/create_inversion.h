// src/create/create_inversion.h - the create driver: turns a checked definition and its mesh into the
// files of a run package, stage by stage, reporting each stage on the form's progress controls.
#pragma once
#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace invsetup {
struct Session;
struct InversionDefinition;

/// The texts of the end of a run: the last progress line, and the message of a run that succeeded.
inline constexpr std::string_view inversion_complete_text = "Inversion processing complete";
inline constexpr std::string_view output_complete_text = "Output complete";
/// The message of every failure of the driver, before the fault's description (empty when the
/// failing operation has already told the person).
inline constexpr std::string_view create_failure_text = "An error occurred while generating the inversion files: ";

/// "model.sus" or "model.den" (refined_name: "refined.sus"/"refined.den") by the run's data kind.
std::string model_file_name(const InversionDefinition& definition, bool refined_name);

/// Writes the run package into `run_directory` (which exists) for `create_mode` (0 new inversion, 1
/// input and batch files only, 2 variation with the data unchanged, 3 variation with new
/// observation files). Needs session.mesh built by the definition checks. Progress goes to the form:
/// Text_progress gets a line per stage, Label_progress the stage's short text, the dialogue the
/// percentages of long loops. Returns 0 after "Output complete" (the creation's arrays - mesh, model,
/// bins, readings, surface - are then given back), or -1 after create_failure_text and the fault;
/// the files already written stay. In refinement mode the run is tiled: the tile directories and
/// batch files, the refined model moved from session.loaded_model (when one is loaded), each tile's
/// mesh, model, weighting, data and topography files, and the merge scripts.
int create_inversion(Session& session, const std::filesystem::path& run_directory, int create_mode);

/// Appends a stage line (and CR LF) to Text_progress.
void append_progress(Session& session, std::string_view text);

/// The readers open the data files by the names the definition holds; a relative name means a file
/// in the working directory. For the life of this guard the names are made whole, then put back, so
/// the saved definitions keep what the person wrote.
class WholeDataFileNames {
public:
    explicit WholeDataFileNames(Session& session);
    ~WholeDataFileNames();
    WholeDataFileNames(const WholeDataFileNames&) = delete;
    WholeDataFileNames& operator=(const WholeDataFileNames&) = delete;

private:
    std::array<std::string, 6>& names_;
    std::array<std::string, 6> kept_;
};

}  // namespace invsetup
