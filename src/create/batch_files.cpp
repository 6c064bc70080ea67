// src/create/batch_files.cpp - the batch files of a run that isn't tiled.
#include "create/batch_files.h"

#include "create/run_names.h"
#include "create/shell_twin.h"
#include "session.h"
#include "support/lines.h"
#include "support/numbers.h"

namespace invsetup {

namespace {

constexpr char quote = '"';

/// The suffix belongs to the version 5 programs only.
const std::string& suffix_of(const InversionDefinition& definition, const RunContext& context) {
    static const std::string none;
    const int method = definition.inversion_method;
    return method == method_ubc_grav_v5 || method == method_ubc_mag_v5 ? context.thread_suffix : none;
}

/// The rock property extraction of a model into the fixed name the input file names.
std::string extraction_line(const InversionDefinition& definition, const std::string& model_file,
                            const std::string& target, const char* option, int nx, int ny, int nz) {
    const char* tool = definition.inversion_method == method_zarninv3d ? "Zarnextract" : "Vorlextract";
    return std::string(tool) + " mesh " + model_file + " " + target + " 1 " + format_picture(nx, "0") + " 1 " +
           format_picture(ny, "0") + " 1 " + format_picture(nz, "0") + " " + option + " " +
           definition.rock_property_file;
}

/// Appends the line unless the method has none.
void add_line(std::vector<std::string>& lines, std::string line) {
    if (!line.empty()) lines.push_back(std::move(line));
}

std::string run_file_stem(int method) {
    if (method == method_zarninv3d) return "zarn";
    if (is_magnetic_method(method)) return "mag";
    return "gz";
}

}  // namespace

std::string cluster_server_line() {
    const std::string server = "Zarnsen3D_RPCServer.exe";
    return std::string("tasklist | findstr ") + quote + " " + server + quote + " || START " + quote + quote + " " +
           quote + server + quote;
}

std::string weight_line(const InversionDefinition& definition, const RunContext& context) {
    if (definition.inversion_method == method_ubc_mag_v5) return "pfweight mag_weights.inp" + context.thread_suffix;
    if (definition.inversion_method == method_ubc_grav_v5) return "pfweight gz_weights.inp" + context.thread_suffix;
    return {};
}

std::string sensitivity_line(const InversionDefinition& definition, const RunContext& context) {
    const int method = definition.inversion_method;
    if (method == method_zarninv3d) return "zarnsen3d zarnsen3d.inp";
    // Gravity V2 takes its files on the command line: it has no input file.
    if (method == method_ubc_grav_v2)
        return definition.topo_type == 0 ? "gzsen3d mesh grav.obs topo.dat" : "gzsen3d mesh grav.obs";
    if (is_magnetic_method(method)) return "magsen3d magsen3d.inp" + suffix_of(definition, context);
    return "gzsen3d gzsen3d.inp" + suffix_of(definition, context);
}

std::string inversion_line(const InversionDefinition& definition, const RunContext& context) {
    const int method = definition.inversion_method;
    if (method == method_zarninv3d) return "zarninv3d zarninv3d.inp";
    if (is_magnetic_method(method)) return "maginv3d maginv3d.inp" + suffix_of(definition, context);
    return "gzinv3d gzinv3d.inp" + suffix_of(definition, context);
}

std::string error_line(const InversionDefinition& definition, int create_mode) {
    const int method = definition.inversion_method;
    const std::string mesh = create_mode < 2 ? "mesh" : "..\\mesh";
    if (method == method_zarninv3d) {
        // The in-house data file is never taken from the parent.
        const char* data = uses_magnetic_names(definition) ? "mag.obs" : "grav.obs";
        return std::string("Zarnerror ") + data + " zarninv3d.pre error.dat " + mesh;
    }
    const bool magnetic = is_magnetic_method(method);
    // Gravity V2 has the parent's data file in mode 3 and its own in mode 2: the other way round
    // from the other methods.
    const int parent_data_mode = method == method_ubc_grav_v2 ? 3 : 2;
    const std::string data = std::string(create_mode == parent_data_mode ? "..\\" : "") +
                             (magnetic ? "mag.obs" : "grav.obs");
    return "vorlerror " + data + (magnetic ? " maginv3d.pre" : " gzinv3d.pre") + " error.dat " + mesh;
}

std::vector<BatchFile> run_batch_files(const InversionDefinition& definition, const RunContext& context, int nx,
                                       int ny, int nz) {
    const int method = definition.inversion_method;
    const bool in_house = method == method_zarninv3d;
    const bool whole_run = context.create_mode < 2;
    const std::string stem = run_file_stem(method);
    const std::string weights = weight_line(definition, context);
    const std::string sensitivity = sensitivity_line(definition, context);
    const std::string inversion = inversion_line(definition, context);
    const std::string errors = error_line(definition, context.create_mode);
    std::vector<BatchFile> files;

    if (whole_run) {
        BatchFile run{"run_inversion.bat", {}};
        const bool magnetic_names = uses_magnetic_names(definition);
        // Both extractions are skipped for "Reference only" (1): the reference test is the same
        // as the bounds test here, unlike the input file's.
        const bool extract = definition.rock_properties_used && definition.rock_application != 1;
        if (definition.model_bounds_given && extract)
            run.lines.push_back(extraction_line(definition, definition.model_bounds_files[0],
                                                magnetic_names ? "mag3d_bounds.sus" : "grav3d_bounds.den", "-Bounds",
                                                nx, ny, nz));
        if (definition.reference_model_given && extract)
            run.lines.push_back(extraction_line(definition, definition.reference_model_file,
                                                magnetic_names ? "mag3d_ref.sus" : "grav3d_ref.den", "-Ref", nx, ny,
                                                nz));
        add_line(run.lines, weights);
        run.lines.push_back(sensitivity);
        run.lines.push_back(inversion);
        if (in_house) run.lines.push_back(errors);
        files.push_back(std::move(run));
    }

    // A variation run recomputes the version 5 weights before its inversion.
    BatchFile inversion_file{"run_" + stem + "inv3d.bat", {}};
    add_line(inversion_file.lines, weights);
    inversion_file.lines.push_back(inversion);
    inversion_file.lines.push_back(errors);
    files.push_back(std::move(inversion_file));

    files.push_back(BatchFile{"run_magerror.bat", {errors}});

    if (whole_run) {
        BatchFile sensitivity_file{"run_" + stem + "sen3d.bat", {}};
        add_line(sensitivity_file.lines, weights);
        sensitivity_file.lines.push_back(sensitivity);
        files.push_back(std::move(sensitivity_file));
    }

    if (in_house && whole_run) {
        files.push_back(BatchFile{"run_zarnsen3d_cluster.bat",
                                  {cluster_server_line(),
                                   std::string("zarnsen3d_cluster_controller ") + quote + "%~dp0" + quote}});
        files.push_back(BatchFile{"run_cluster_inversion.bat",
                                  {"call run_zarnsen3d_cluster.bat", "call run_zarninv3d.bat"}});
    }
    return files;
}

void write_batch_file(const std::filesystem::path& path, const std::vector<std::string>& lines) {
    write_text_lines(path, lines);
    write_shell_twin(path, lines);
}

void write_run_files(Session& session, const RunContext& context) {
    for (const BatchFile& file :
         run_batch_files(session.definition, context, session.mesh.nx, session.mesh.ny, session.mesh.nz))
        write_batch_file(context.run_directory / file.name, file.lines);
}

}  // namespace invsetup
