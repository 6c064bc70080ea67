// src/create/batch_files.h - the Windows batch files of a run that isn't tiled: the whole run, the
// inversion alone, the error report, the sensitivity alone, and the in-house cluster pair.
#pragma once
#include <filesystem>
#include <string>
#include <vector>

#include "create/run_context.h"
#include "form/inversion_definition.h"

namespace invsetup {
struct Session;

/// One batch file: its name in the run directory and its lines.
struct BatchFile {
    std::string name;
    std::vector<std::string> lines;
};

/// The program lines of a run; "" where a method has none (weight_line outside methods 5 and 6).
/// The version 5 lines end with context.thread_suffix.
std::string weight_line(const InversionDefinition& definition, const RunContext& context);
std::string sensitivity_line(const InversionDefinition& definition, const RunContext& context);
std::string inversion_line(const InversionDefinition& definition, const RunContext& context);
/// The first line of "run_zarnsen3d_cluster.bat": starts the sensitivity server unless it runs.
std::string cluster_server_line();
/// The error report line; variation runs find the mesh, and some methods the data, in the parent.
std::string error_line(const InversionDefinition& definition, int create_mode);

/// The batch files of a run in the order they are written: "run_inversion.bat" (create modes 0
/// and 1), the inversion file, "run_magerror.bat", the sensitivity file (modes 0 and 1), and for the
/// in-house method in modes 0 and 1 "run_zarnsen3d_cluster.bat" and "run_cluster_inversion.bat".
/// nx, ny, nz are the mesh's cell counts, used by the rock property extraction lines.
std::vector<BatchFile> run_batch_files(const InversionDefinition& definition, const RunContext& context, int nx,
                                       int ny, int nz);

/// Writes one batch file of a run package (CR LF lines, replacing what is there) and its sh twin
/// beside it (write_shell_twin). Every batch file of a package, the tile and merge files included,
/// goes through here, so that whatever accompanies a batch file is made in one place. Throws
/// std::runtime_error naming the file when it can't be written.
void write_batch_file(const std::filesystem::path& path, const std::vector<std::string>& lines);

/// Writes run_batch_files for session.mesh into the run directory. The weighting model "w.dat" is
/// not written here: the driver writes it next. Throws std::runtime_error naming the file when one
/// can't be written.
void write_run_files(Session& session, const RunContext& context);

}  // namespace invsetup
