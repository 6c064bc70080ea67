// bench/bench_model_file.cpp - the model file of a 10,000,000-cell mesh (200 x 200 x 250): the
// starting model of a plain run (every cell 0, 140 MB of " 0.00000E+00" lines), then a model of
// varied values, then the binary form. Usage: bench_model_file [DIRECTORY] (default: the system's
// temporary directory). Prints seconds and megabytes per case.
#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <filesystem>
#include <random>

#include "modelfiles/model_file_write.h"
#include "support/dialogue.h"

namespace {

using invsetup::ModelValues;

/// Wall seconds of one write; `cpu` gets the process's CPU seconds (the machine may be shared).
double time_write(double& cpu, invsetup::HeadlessDialogue& dialogue, const std::filesystem::path& file, const ModelValues& model,
                  invsetup::ModelWriteRequest request) {
    const std::clock_t cpu_start = std::clock();
    const auto start = std::chrono::steady_clock::now();
    invsetup::write_model_file(dialogue, file, model, request);
    cpu = static_cast<double>(std::clock() - cpu_start) / CLOCKS_PER_SEC;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void report(const char* name, double seconds, double cpu, const std::filesystem::path& file) {
    std::printf("%-44s %7.3f s wall %7.3f s cpu  %8.1f MB\n", name, seconds, cpu,
                static_cast<double>(std::filesystem::file_size(file)) / 1e6);
}

}  // namespace

int main(int argc, char** argv) {
    const std::filesystem::path directory = argc > 1 ? std::filesystem::path(argv[1])
                                                     : std::filesystem::temp_directory_path();
    const std::filesystem::path file = directory / "bench_model.sus";
    invsetup::HeadlessDialogue dialogue;

    ModelValues model;
    model.size(200, 200, 250, 0.0f);
    const auto whole = invsetup::whole_model_request(model);
    double best = 1e9, best_cpu = 1e9, cpu = 0;
    for (int run = 0; run < 3; ++run) {
        best = std::min(best, time_write(cpu, dialogue, file, model, whole));
        best_cpu = std::min(best_cpu, cpu);
    }
    report("text, every cell 0 (plain run), best of 3", best, best_cpu, file);

    // Susceptibilities of a recovered model: a few thousand distinct values, some null cells.
    std::mt19937 random(12345);
    std::lognormal_distribution<float> susceptibility(-6.0f, 1.5f);
    for (float& value : model.values) value = random() % 50 == 0 ? -1e32f : susceptibility(random);
    double seconds = time_write(cpu, dialogue, file, model, whole);
    report("text, varied values and nulls", seconds, cpu, file);

    auto binary = whole;
    binary.export_mode = invsetup::model_export_binary;
    seconds = time_write(cpu, dialogue, file, model, binary);
    report("binary, whole array", seconds, cpu, file);

    std::filesystem::remove(file);
    return 0;
}
