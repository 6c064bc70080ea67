// src/data/observed_data.cpp - conditioning and binning of the observed data.
#include "data/observed_data.h"

namespace invsetup {

void ObservationBins::size_bins(int nx, int ny) {
    bin_used.assign(nx + 1, ny + 1, 0);
    bin_x.assign(nx + 1, ny + 1, 0.0);
    bin_y.assign(nx + 1, ny + 1, 0.0);
    bin_z.assign(nx + 1, ny + 1, 0.0);
    bin_value1.assign(nx + 1, ny + 1, 0.0);
    bin_value2.assign(nx + 1, ny + 1, 0.0);
    bin_value3.assign(nx + 1, ny + 1, 0.0);
    bin_extra.assign(nx + 1, ny + 1, 0.0);
    bin_label.assign(nx + 1, ny + 1, std::string());
}

}  // namespace invsetup
