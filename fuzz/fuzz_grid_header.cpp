// fuzz/fuzz_grid_header.cpp - a grid file's header as the grid reader takes it (the first byte picks
// the file kind by its extension).
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "grids/grid_access.h"
#include "session.h"
#include "support/dialogue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace invsetup;
    if (size == 0) return 0;
    static const char* const names[] = {"grid.asc", "grid.grd", "grid.xyz", "grid.ers", "grid.hgt"};
    const std::string path = fuzz::input_file(names[data[0] % 5], data + 1, size - 1);
    HeadlessDialogue dialogue;
    Session session(dialogue);
    GridWindow window;
    std::string text;
    Array1<int> ints;
    Array1<double> reals;
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0;
    int status = 0;
    read_grid_header(session, path, window, text, ints, reals, x_min, x_max, y_min, y_max, status);
    std::string ignored;
    remove_temporary_grid(session.grids.temporary_grid_name, ignored);
    return 0;
}
