// src/support/igrf.h - the International Geomagnetic Reference Field: the main field at a place and
// date from the published table of spherical harmonic coefficients (IGRF-14: 1900 to 2030).
#pragma once
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace invsetup {

/// The field in the geodetic frame, nT, and its angles in degrees (inclination positive down,
/// declination positive east).
struct GeomagneticField {
    double north = 0;
    double east = 0;
    double down = 0;
    double horizontal = 0;
    double intensity = 0;
    double inclination = 0;
    double declination = 0;
};

class IgrfModel {
public:
    /// Reads the coefficient table ("igrf14coeffs.txt": g/h rows of degree, order and one value per
    /// epoch, then the secular variation of the last five years). Throws std::runtime_error naming
    /// the file and what is wrong with it.
    static IgrfModel read(const std::filesystem::path& path);

    double first_year() const { return epochs_.front(); }
    /// The end of the secular variation's reach, five years beyond the last epoch.
    double last_year() const { return epochs_.back() + 5; }

    /// The field at a decimal year, longitude and latitude (degrees, WGS84) and elevation above the
    /// ellipsoid (metres). Throws std::out_of_range for a date outside first_year..last_year.
    GeomagneticField field(double year, double longitude, double latitude, double elevation) const;

private:
    int max_degree_ = 0;
    std::vector<double> epochs_;
    // Per epoch, g and h of (n, m) packed at n * (n + 1) / 2 + m - 1; the rates likewise.
    std::vector<std::vector<double>> g_, h_;
    std::vector<double> g_rate_, h_rate_;
};

/// A date as a decimal year: "2025.5", or "2025-07-02" (the middle of that day). No value when the
/// text is neither.
std::optional<double> decimal_year(std::string_view date);

/// The coefficient table beside the program (`program_directory`), or in ../share/invsetup from it
/// for an installed program. An empty path when neither holds it.
std::filesystem::path find_igrf_coefficients(const std::filesystem::path& program_directory);

/// The name of the coefficient table file.
inline constexpr const char* igrf_coefficients_file_name = "igrf14coeffs.txt";

}  // namespace invsetup
