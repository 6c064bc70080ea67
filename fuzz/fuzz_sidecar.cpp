// fuzz/fuzz_sidecar.cpp - world, MapInfo tab, header and grf sidecars (the first byte picks the kind).
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "grids/sidecar.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace invsetup;
    if (size == 0) return 0;
    static const char* const names[] = {"picture.wld", "picture.tab", "picture.hdr", "picture.grf", "picture.jgw"};
    const std::string path = fuzz::input_file(names[data[0] % 5], data + 1, size - 1);
    const SidecarGeoreference georeference = read_sidecar_file(path);
    double x_min = 0, x_max = 0, y_min = 0, y_max = 0, x_spacing = 0, y_spacing = 0;
    georeference_limits(georeference, 100, 80, x_min, x_max, y_min, y_max, x_spacing, y_spacing);
    return 0;
}
