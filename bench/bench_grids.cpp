// bench/bench_grids.cpp - times the grid layer on a 4000 x 4000 float grid: reading it whole and a
// window of it through read_grid_header, and the values at 1,000,000 mesh cell centres, a mesh row
// at a time as the data and topography stages ask for them.
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <vector>

#include "grids/grid_access.h"
#include "session.h"
#include "support/numbers.h"

namespace {

using namespace invsetup;
using Clock = std::chrono::steady_clock;

// Wall time, and beside it the processor time, which a machine busy with other work doesn't inflate.
struct Stopwatch {
    Clock::time_point wall = Clock::now();
    std::clock_t cpu = std::clock();
    void print(const char* label) const {
        std::printf("%-32s %.3f s wall, %.3f s cpu\n", label,
                    std::chrono::duration<double>(Clock::now() - wall).count(),
                    static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC);
    }
};

template <class T>
void put(std::ofstream& out, T value) {
    out.write(reinterpret_cast<const char*>(&value), sizeof value);
}

// A Surfer 6 binary grid: "DSBB", sizes, limits, value range, then rows from the south. Written by
// hand so that the bench needs nothing beyond the core library.
void write_surfer_binary(const std::filesystem::path& path, int size, double spacing) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write("DSBB", 4);
    put(out, static_cast<std::int16_t>(size));
    put(out, static_cast<std::int16_t>(size));
    const double high = 500000.0 + (size - 1) * spacing;
    for (double limit : {500000.0, high, 7000000.0, 7000000.0 + (size - 1) * spacing, 0.0, 2000.0}) put(out, limit);
    std::vector<float> row(static_cast<std::size_t>(size));
    for (int r = 0; r < size; ++r) {
        for (int c = 0; c < size; ++c)
            row[static_cast<std::size_t>(c)] = static_cast<float>(1000.0 + 500.0 * std::sin(c * 0.01) * std::cos(r * 0.013));
        if (r == size / 2) row[static_cast<std::size_t>(size / 2)] = 1.70141e38f;  // one blank node
        out.write(reinterpret_cast<const char*>(row.data()), static_cast<std::streamsize>(row.size() * sizeof(float)));
    }
}

}  // namespace

int main() {
    const int size = 4000;
    const double spacing = 25.0;
    const auto path = std::filesystem::temp_directory_path() / "bench_grids_4000.grd";
    write_surfer_binary(path, size, spacing);
    std::printf("grid %d x %d float (Surfer 6 binary, %.0f MB)\n", size, size,
                static_cast<double>(std::filesystem::file_size(path)) / 1e6);

    HeadlessDialogue dialogue;
    Session session(dialogue);
    GridWindow grid;
    std::string text;
    Array1<int> ints;
    Array1<double> reals;
    int status = 0;

    double x_min = 1, x_max = 0, y_min = 1, y_max = 0;  // the whole grid
    Stopwatch whole;
    read_grid_header(session, path.string(), grid, text, ints, reals, x_min, x_max, y_min, y_max, status);
    whole.print("read whole grid:");
    if (status < 0) {
        std::fprintf(stderr, "bench_grids: the grid could not be read\n");
        return 1;
    }

    // The middle quarter, as a mesh over part of a survey asks for it.
    double wx_min = 500000.0 + 1000 * spacing + 3.0, wx_max = 500000.0 + 3000 * spacing - 3.0;
    double wy_min = 7000000.0 + 1000 * spacing + 3.0, wy_max = 7000000.0 + 3000 * spacing - 3.0;
    Stopwatch both;
    Stopwatch window;
    read_grid_header(session, path.string(), grid, text, ints, reals, wx_min, wx_max, wy_min, wy_max, status);
    window.print("read 2000 x 2000 window:");

    // 1000 x 1000 cell centres of 49.5 m cells inside the window, one mesh row at a time.
    const int cells = 1000;
    const double cell = 49.5;
    std::vector<double> x(cells), y(cells), values(cells);
    double sum = 0;
    std::int64_t nulls = 0;
    Stopwatch centres;
    for (int j = 0; j < cells; ++j) {
        for (int i = 0; i < cells; ++i) {
            x[static_cast<std::size_t>(i)] = wx_min + (i + 0.5) * cell;
            y[static_cast<std::size_t>(i)] = wy_min + (j + 0.5) * cell;
        }
        GEO_CELL_INTERPOLATION(grid, x, y, values);
        for (double value : values) {
            if (is_null(value)) ++nulls;
            else sum += value;
        }
    }
    centres.print("1,000,000 cell centres:");
    both.print("window read + centres:");
    std::printf("  (%d x %d nodes in the window, %lld null centres, mean %.3f)\n", ints[grid_int::columns],
                ints[grid_int::rows], static_cast<long long>(nulls), sum / static_cast<double>(cells * cells - nulls));

    GridStatistics statistics;
    Stopwatch whole_statistics;
    GRDSTAT(path.string(), statistics, status);
    whole_statistics.print("statistics of the whole file:");
    std::filesystem::remove(path);
    return 0;
}
