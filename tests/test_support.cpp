// tests/test_support.cpp - shared test helpers.
#include "test_support.h"

#include <atomic>
#include <fstream>
#include <random>
#include <cstdio>
#include <sys/wait.h>
#include <sstream>
#include <stdexcept>

#include "commands/commands.h"
#include "definition/parameter_file.h"
#include "form/form_load.h"
#include "session.h"
#include "support/dialogue.h"
#include "support/lines.h"

namespace invsetup::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    std::random_device random;
    auto base = std::filesystem::temp_directory_path();
    for (;;) {
        path_ = base / ("invsetup-test-" + std::to_string(random()) + "-" + std::to_string(counter++));
        if (std::filesystem::create_directory(path_)) break;
    }
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string read_file_bytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot open " + path.string());
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::vector<std::string> lines_of(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; read_line(in, line);) lines.push_back(line);
    return lines;
}

std::string file_text(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text;
}

std::string output_of(const std::string& command) {
    std::string text;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) text.append(buffer, n);
        pclose(pipe);
    }
    return text;
}

void write_file_bytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out) throw std::runtime_error("cannot write " + path.string());
}

std::filesystem::path test_data(const std::string& relative) { return std::filesystem::path(INVSETUP_TEST_DATA) / relative; }

std::set<std::string> listing(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

std::map<std::string, std::string> package(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) files[fs::relative(entry.path(), folder).generic_string()] = read_file_bytes(entry.path());
    return files;
}

fs::path example_folder(const std::string& name) {
    return fs::path(INVSETUP_TEST_DATA).parent_path().parent_path() / "examples" / name;
}

void copy_example(const std::string& name, const fs::path& to) {
    fs::copy(example_folder(name), to, fs::copy_options::recursive);
}

void write_small_survey_files(const fs::path& folder) {
    write_file_bytes(folder / "obs.csv",
                     "x,y,z,value,line\r\n"
                     "1025,2025,80,12.5,L10\r\n"
                     "1040,2040,85,99,L10\r\n"
                     "1075,2025,80,-3.25,L10\r\n"
                     "1025,2075,90,7,L20\r\n"
                     "1075,2075,95,100,L20\r\n");
    std::string topography = "x,y,z\r\n";
    for (int y : {1990, 2030, 2050, 2070, 2110})
        for (int x : {990, 1030, 1050, 1070, 1110}) topography += std::to_string(x) + "," + std::to_string(y) + ",50\r\n";
    write_file_bytes(folder / "topo.csv", topography);
}

InversionMesh uniform_mesh(const std::array<int, 3>& counts, const std::array<double, 3>& widths,
                           const std::array<double, 3>& origin) {
    InversionMesh mesh;
    mesh.nx = counts[0];
    mesh.ny = counts[1];
    mesh.nz = counts[2];
    mesh.size_arrays();
    mesh.dx.assign(mesh.nx, widths[0]);
    mesh.dy.assign(mesh.ny, widths[1]);
    mesh.dz.assign(mesh.nz, widths[2]);
    mesh.x_nodes[1] = origin[0];
    mesh.y_nodes[1] = origin[1];
    mesh.z_nodes[1] = origin[2];
    lay_nodes(mesh);
    return mesh;
}

LoadedMesh coarse_mesh() {
    LoadedMesh mesh;
    mesh.loaded = true;
    mesh.nx = mesh.ny = mesh.nz = 10;
    mesh.dx.assign(10, 100.0);
    mesh.dy.assign(10, 100.0);
    mesh.dz.assign(10, 50.0);
    mesh.x_nodes.assign(11);
    mesh.y_nodes.assign(11);
    mesh.z_nodes.assign(11);
    for (int i = 1; i <= 11; ++i) {
        mesh.x_nodes[i] = 100.0 * (i - 1);
        mesh.y_nodes[i] = 100.0 * (i - 1);
        mesh.z_nodes[i] = -50.0 * (i - 1);
    }
    mesh.pad_x_low = mesh.pad_x_high = mesh.pad_y_low = mesh.pad_y_high = mesh.pad_z_low = mesh.pad_z_high = 0;
    return mesh;
}

int load_definition(Session& session, HeadlessDialogue& dialogue, const InversionFields& definition,
                    const fs::path& file) {
    save_inversion_parameters(definition, "small survey", file);
    session.working_directory = file.parent_path();
    initialise_inversion_form(session);
    dialogue.file_answers.push_back(file.string());
    return read_command(session, 0);
}

void set_run_directory(Session& session, const fs::path& run) {
    session.form.set_text("Drive1", "/");
    session.form.set_text("Dir1", run.parent_path().string());
    session.form.set_text("Text_directory_name", run.filename().string());
}

std::string last_words(const Session& session, const HeadlessDialogue& dialogue) {
    return (dialogue.messages.empty() ? "" : dialogue.messages.back()) + "\n" + session.form.text("Text_progress");
}

std::string quoted(const std::filesystem::path& path) {
    std::string text(1, '"');
    text.append(path.string());
    text.push_back('"');
    return text;
}

CliRun run_cli(const std::string& arguments) {
    CliRun run;
    TempDir scratch;
    const std::filesystem::path err_file = scratch.path() / "stderr.txt";
    const std::string command = quoted(INVSETUP_CLI) + " " + arguments + " 2>" + quoted(err_file);
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return run;
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) run.out.append(buffer, n);
    const int status = pclose(pipe);
    run.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (std::filesystem::exists(err_file)) run.err = read_file_bytes(err_file);
    return run;
}

}  // namespace invsetup::testing
