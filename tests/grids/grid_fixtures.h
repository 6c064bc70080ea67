// tests/grids/grid_fixtures.h - small grids written by GDAL itself, in any format it can create.
#pragma once
#include <gdal.h>
#include <cpl_conv.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace invsetup::testing {

/// Writes a one-band float grid through `driver` ("GTiff", "ERS", "GSBG", "GS7BG", "AAIGrid",
/// "GSAG", "PNG"...). `north_first` holds the values row by row from the north; the top-left corner
/// of the top-left pixel is (x_corner, y_top). `bands` above 1 repeats the values (for pictures).
inline void write_gdal_grid(const std::filesystem::path& path, const char* driver_name, int columns, int rows,
                            double x_corner, double y_top, double x_size, double y_size,
                            const std::vector<float>& north_first, std::optional<double> null = std::nullopt,
                            GDALDataType type = GDT_Float32, int bands = 1) {
    GDALAllRegister();
    GDALDriverH memory = GDALGetDriverByName("MEM");
    GDALDatasetH source = GDALCreate(memory, "", columns, rows, bands, type, nullptr);
    double transform[6] = {x_corner, x_size, 0, y_top, 0, -y_size};
    GDALSetGeoTransform(source, transform);
    for (int band = 1; band <= bands; ++band) {
        GDALRasterBandH handle = GDALGetRasterBand(source, band);
        if (null) GDALSetRasterNoDataValue(handle, *null);
        if (GDALRasterIO(handle, GF_Write, 0, 0, columns, rows, const_cast<float*>(north_first.data()), columns, rows,
                         GDT_Float32, 0, 0) != CE_None)
            throw std::runtime_error("fixture values not written");
    }
    GDALDatasetH copy = GDALCreateCopy(GDALGetDriverByName(driver_name), path.string().c_str(), source, FALSE, nullptr,
                                       nullptr, nullptr);
    GDALClose(source);
    if (copy == nullptr) throw std::runtime_error(std::string("fixture not written by ") + driver_name);
    GDALClose(copy);
}

/// Values v = column + 10 * row_from_south (both from 0), north row first: easy to check by eye.
inline std::vector<float> ramp_values(int columns, int rows) {
    std::vector<float> values;
    for (int r = rows - 1; r >= 0; --r)
        for (int c = 0; c < columns; ++c) values.push_back(static_cast<float>(c + 10 * r));
    return values;
}

}  // namespace invsetup::testing
