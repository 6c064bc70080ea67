// src/create/run_context.h - what the create driver holds while it writes one run package, and
// the writers of that package read.
#pragma once
#include <filesystem>
#include <string>

namespace invsetup {

/// The driver's state for one creation. The driver fills it before the first writer runs; only
/// write_weighting_input changes it (thread_suffix).
struct RunContext {
    /// The run directory; every file of the package is named relative to it.
    std::filesystem::path run_directory;
    /// 0 new inversion, 1 input and batch files only, 2 variation run with the data unchanged,
    /// 3 variation run with new observation files.
    int create_mode = 0;
    /// A blank and the thread count behind the version 5 program lines, "" for every other method.
    /// Set by write_weighting_input; the batch writers read it.
    std::string thread_suffix;
    /// The flag and the rotation (degrees) of the run's point transform: the in-house sensitivity
    /// file passes a rotation on for the tensor components that depend on the grid's orientation.
    bool transform_in_use = false;
    double transform_rotation = 0;

    /// A variation run lies in a sub-directory of the run that holds the sensitivity matrix, so its
    /// files name the parent's files through "..\".
    std::string path_prefix() const { return create_mode < 2 ? std::string() : std::string("..\\"); }
};

}  // namespace invsetup
