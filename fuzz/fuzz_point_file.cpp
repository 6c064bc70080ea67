// fuzz/fuzz_point_file.cpp - a point file with its column definitions: the first eight bytes give
// the columns, the first line, the step and the flags; the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>

#include "data/location_file.h"
#include "fuzz_support.h"
#include "session.h"
#include "support/dialogue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace invsetup;
    if (size < 8) return 0;
    LocationFileSettings settings;
    settings.file = fuzz::input_file("points.csv", data + 8, size - 8);
    settings.x_column = data[0] % 12;
    settings.y_column = data[1] % 12;
    settings.z_column = data[2] % 12;
    settings.value_columns = {data[3] % 12, data[4] % 12, 0};
    settings.first_line = data[5] % 4;
    settings.read_step = data[6] % 3;
    settings.line_column = data[7] & 1 ? 5 : 0;
    settings.label_column = data[7] & 2 ? 6 : 0;
    settings.integration_interval = data[7] & 4 ? 10.0f : 0.0f;
    settings.z_sign_flag = data[7] & 8 ? 1 : 0;
    HeadlessDialogue dialogue;
    Session session(dialogue);
    LocationData points;
    LocationSummary summary;
    load_locations_file(session, settings, points, summary);
    return 0;
}
