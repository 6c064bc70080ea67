// apps/cli/igrf_command.cpp - igrf: the reference field at a date and place, as "Calculate IGRF"
// gives it to the form.
#include "commands.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "support/igrf.h"
#include "support/numbers.h"

namespace invsetup::cli {

namespace {

struct IgrfOptions {
    std::string date;
    double longitude = 0;
    double latitude = 0;
    double elevation = 0;
};

/// The folder of the running program, where the coefficient table stands beside it.
std::filesystem::path program_directory() {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::current_path() : self.parent_path();
}

int run_igrf(const IgrfOptions& options) {
    const std::optional<double> year = decimal_year(options.date);
    if (!year) {
        std::cerr << "invsetup: the date \"" << options.date << "\" is neither YYYY-MM-DD nor a decimal year\n";
        return 1;
    }
    const std::filesystem::path table = find_igrf_coefficients(program_directory());
    if (table.empty()) {
        std::cerr << "invsetup: the IGRF coefficient table " << igrf_coefficients_file_name
                  << " is not beside the program in " << program_directory().string() << '\n';
        return 1;
    }
    try {
        const IgrfModel model = IgrfModel::read(table);
        const GeomagneticField field = model.field(*year, options.longitude, options.latitude, options.elevation);
        std::cout << "Intensity:   " << format_picture(field.intensity, "0.00") << " nT\n";
        std::cout << "Inclination: " << format_picture(field.inclination, "0.000") << " degrees\n";
        std::cout << "Declination: " << format_picture(field.declination, "0.000") << " degrees\n";
    } catch (const std::exception& fault) {
        std::cerr << "invsetup: " << fault.what() << '\n';
        return 1;
    }
    return 0;
}

}  // namespace

void register_igrf_command(CLI::App& app, int& exit_code) {
    CLI::App* igrf = app.add_subcommand("igrf", "The IGRF-14 main field at a date and place (as \"Calculate IGRF\")");
    auto options = std::make_shared<IgrfOptions>();
    igrf->add_option("DATE", options->date, "YYYY-MM-DD or a decimal year, 1900 to 2030")->required();
    igrf->add_option("LON", options->longitude, "Longitude, degrees east")->required()->check(CLI::Range(-360.0, 360.0));
    igrf->add_option("LAT", options->latitude, "Latitude, degrees north")->required()->check(CLI::Range(-90.0, 90.0));
    igrf->add_option("ELEV", options->elevation, "Elevation above the ellipsoid, metres")->required();
    igrf->callback([&exit_code, options] { exit_code = run_igrf(*options); });
}

}  // namespace invsetup::cli
