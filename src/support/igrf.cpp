// src/support/igrf.cpp - field synthesis from the IGRF coefficient table.
#include "support/igrf.h"

#include <array>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/files.h"
#include "support/lines.h"

namespace invsetup {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double reference_radius = 6371.2;  // km, the radius of the coefficients
constexpr double wgs84_equator = 6378.137;   // km
constexpr double wgs84_flattening = 1 / 298.257223563;

/// Index of (n, m), n >= 1, 0 <= m <= n, in a packed triangle.
std::size_t packed(int n, int m) { return static_cast<std::size_t>(n * (n + 1) / 2 + m - 1); }

std::string year_text(double year) {
    std::ostringstream text;
    text.setf(std::ios::fixed);
    text.precision(2);
    text << year;
    return text.str();
}

double radians(double degrees) { return degrees * pi / 180; }
double degrees(double radians) { return radians * 180 / pi; }

std::vector<double> numbers_of(const std::string& line) {
    std::istringstream in(line);
    std::vector<double> numbers;
    std::string word;
    while (in >> word) {
        try {
            std::size_t used = 0;
            numbers.push_back(std::stod(word, &used));
            if (used != word.size() || !std::isfinite(numbers.back())) throw std::invalid_argument(word);
        } catch (const std::exception&) {
            throw std::runtime_error("\"" + word + "\" is not a number");
        }
    }
    return numbers;
}

}  // namespace

IgrfModel IgrfModel::read(const std::filesystem::path& path) {
    require_regular_file(path, "IGRF coefficient file");
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("The IGRF coefficient file " + path.string() + " can't be opened");
    IgrfModel model;
    std::string line;
    int line_number = 0;
    try {
        while (read_clean_line(in, line)) {
            ++line_number;
            std::istringstream words(line);
            std::string kind;
            if (!(words >> kind) || kind[0] == '#' || kind == "c/s") continue;
            std::string rest;
            std::getline(words, rest);
            if (kind == "g/h") {
                // "g/h n m 1900.0 ... 2025.0 2025-30": the epochs, then the secular variation column.
                std::istringstream heads(rest);
                std::string head;
                heads >> head >> head;
                while (heads >> head)
                    if (head.find('-') == std::string::npos) model.epochs_.push_back(std::stod(head));
                if (model.epochs_.empty()) throw std::runtime_error("the heading names no epoch");
                model.g_.assign(model.epochs_.size(), {});
                model.h_.assign(model.epochs_.size(), {});
                continue;
            }
            if (kind != "g" && kind != "h") throw std::runtime_error("a row must begin with g or h");
            if (model.epochs_.empty()) throw std::runtime_error("coefficients come before the heading");
            const std::vector<double> numbers = numbers_of(rest);
            if (numbers.size() != model.epochs_.size() + 3)
                throw std::runtime_error("expected " + std::to_string(model.epochs_.size() + 3) + " numbers, found " +
                                         std::to_string(numbers.size()));
            if (!(numbers[0] >= 1 && numbers[0] <= 30 && numbers[1] >= 0 && numbers[1] <= numbers[0]))
                throw std::runtime_error("degree or order out of range");
            const int n = static_cast<int>(numbers[0]), m = static_cast<int>(numbers[1]);
            model.max_degree_ = std::max(model.max_degree_, n);
            const std::size_t k = packed(n, m);
            auto& table = kind == "g" ? model.g_ : model.h_;
            auto& rate = kind == "g" ? model.g_rate_ : model.h_rate_;
            for (std::size_t e = 0; e < model.epochs_.size(); ++e) {
                if (table[e].size() <= k) table[e].resize(k + 1, 0.0);
                table[e][k] = numbers[e + 2];
            }
            if (rate.size() <= k) rate.resize(k + 1, 0.0);
            rate[k] = numbers.back();
        }
    } catch (const std::exception& fault) {
        throw std::runtime_error("The IGRF coefficient file " + path.string() + ", line " +
                                 std::to_string(line_number) + ": " + fault.what());
    }
    if (model.max_degree_ < 1) throw std::runtime_error("The IGRF coefficient file " + path.string() + " holds no coefficients");
    const std::size_t size = packed(model.max_degree_, model.max_degree_) + 1;
    for (auto* table : {&model.g_, &model.h_})
        for (auto& epoch : *table) epoch.resize(size, 0.0);
    model.g_rate_.resize(size, 0.0);
    model.h_rate_.resize(size, 0.0);
    return model;
}

GeomagneticField IgrfModel::field(double year, double longitude, double latitude, double elevation) const {
    if (!(year >= first_year() && year <= last_year()))
        throw std::out_of_range("The date " + year_text(year) + " lies outside the IGRF (" +
                                std::to_string(static_cast<int>(first_year())) + " to " +
                                std::to_string(static_cast<int>(last_year())) + ")");
    if (!(latitude >= -90 && latitude <= 90)) throw std::out_of_range("The latitude must lie between -90 and 90");

    // Coefficients at the date: between two epochs linearly, beyond the last by its secular variation.
    const std::size_t size = g_rate_.size();
    std::vector<double> g(size), h(size);
    std::size_t e = 0;
    while (e + 1 < epochs_.size() && year >= epochs_[e + 1]) ++e;
    if (e + 1 < epochs_.size()) {
        const double t = (year - epochs_[e]) / (epochs_[e + 1] - epochs_[e]);
        for (std::size_t k = 0; k < size; ++k) {
            g[k] = g_[e][k] + t * (g_[e + 1][k] - g_[e][k]);
            h[k] = h_[e][k] + t * (h_[e + 1][k] - h_[e][k]);
        }
    } else {
        const double t = year - epochs_.back();
        for (std::size_t k = 0; k < size; ++k) {
            g[k] = g_.back()[k] + t * g_rate_[k];
            h[k] = h_.back()[k] + t * h_rate_[k];
        }
    }

    // Geodetic latitude and height to geocentric radius and colatitude.
    const double a2 = wgs84_equator * wgs84_equator;
    const double polar = wgs84_equator * (1 - wgs84_flattening);
    const double b2 = polar * polar;
    const double height = elevation / 1000;
    const double geodetic_colatitude = radians(90 - latitude);
    const double ct = std::cos(geodetic_colatitude), st = std::sin(geodetic_colatitude);
    const double rho = std::sqrt(a2 * st * st + b2 * ct * ct);
    const double r = std::sqrt(height * (height + 2 * rho) + (a2 * a2 * st * st + b2 * b2 * ct * ct) / (rho * rho));
    const double cd = (height + rho) / r;             // cosine and sine of the angle between the verticals
    const double sd = (a2 - b2) * ct * st / (rho * r);
    const double cos_theta = ct * cd - st * sd;
    const double sin_theta = st * cd + ct * sd;

    // Schmidt semi-normalised associated Legendre functions and their theta derivatives.
    const int N = max_degree_;
    std::vector<double> P((N + 1) * (N + 1), 0.0), dP((N + 1) * (N + 1), 0.0);
    auto at = [N](int n, int m) { return static_cast<std::size_t>(n * (N + 1) + m); };
    P[at(0, 0)] = 1;
    for (int n = 1; n <= N; ++n) {
        for (int m = 0; m <= n; ++m) {
            if (n == m) {
                const double k = n == 1 ? 1.0 : std::sqrt(1 - 1.0 / (2 * n));
                P[at(n, n)] = k * sin_theta * P[at(n - 1, n - 1)];
                dP[at(n, n)] = k * (sin_theta * dP[at(n - 1, n - 1)] + cos_theta * P[at(n - 1, n - 1)]);
            } else {
                const double root = std::sqrt(static_cast<double>(n * n - m * m));
                const double back = n >= 2 ? std::sqrt(static_cast<double>((n - 1) * (n - 1) - m * m)) : 0.0;
                const double p2 = n >= 2 ? P[at(n - 2, m)] : 0.0, dp2 = n >= 2 ? dP[at(n - 2, m)] : 0.0;
                P[at(n, m)] = ((2 * n - 1) * cos_theta * P[at(n - 1, m)] - back * p2) / root;
                dP[at(n, m)] =
                    ((2 * n - 1) * (cos_theta * dP[at(n - 1, m)] - sin_theta * P[at(n - 1, m)]) - back * dp2) / root;
            }
        }
    }

    const double phi = radians(longitude);
    double radial = 0, theta_part = 0, phi_part = 0;
    for (int n = 1; n <= N; ++n) {
        const double scale = std::pow(reference_radius / r, n + 2);
        double sum_r = 0, sum_t = 0, sum_p = 0;
        for (int m = 0; m <= n; ++m) {
            const std::size_t k = packed(n, m);
            const double cm = std::cos(m * phi), sm = std::sin(m * phi);
            const double term = g[k] * cm + h[k] * sm;
            sum_r += term * P[at(n, m)];
            sum_t += term * dP[at(n, m)];
            sum_p += m * (g[k] * sm - h[k] * cm) * P[at(n, m)];
        }
        radial += (n + 1) * scale * sum_r;
        theta_part += -scale * sum_t;
        phi_part += scale * sum_p;
    }
    // At a pole the east part is the limit of sum_p / sin(theta); P(n,1)/sin(theta) stays finite,
    // so a tiny sine is enough there.
    const double safe_sin = std::max(std::abs(sin_theta), 1e-12);
    const double east = phi_part / safe_sin;

    // Geocentric north and down, turned into the geodetic frame.
    const double north_c = -theta_part, down_c = -radial;
    GeomagneticField result;
    result.north = north_c * cd + down_c * sd;
    result.down = down_c * cd - north_c * sd;
    result.east = east;
    result.horizontal = std::hypot(result.north, result.east);
    result.intensity = std::hypot(result.horizontal, result.down);
    result.inclination = degrees(std::atan2(result.down, result.horizontal));
    result.declination = degrees(std::atan2(result.east, result.north));
    return result;
}

std::optional<double> decimal_year(std::string_view date) {
    const std::string text(date);
    int y = 0, m = 0, d = 0;
    char dash1 = 0, dash2 = 0;
    std::istringstream in(text);
    if (text.find('-', 1) != std::string::npos) {
        if (!(in >> y >> dash1 >> m >> dash2 >> d) || dash1 != '-' || dash2 != '-' || !(in >> std::ws).eof()) return {};
        static constexpr std::array<int, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
        if (m < 1 || m > 12) return {};
        const int month_days = days[static_cast<std::size_t>(m - 1)] + (m == 2 && leap ? 1 : 0);
        if (d < 1 || d > month_days) return {};
        int day_of_year = d;
        for (int k = 1; k < m; ++k) day_of_year += days[static_cast<std::size_t>(k - 1)] + (k == 2 && leap ? 1 : 0);
        return y + (day_of_year - 0.5) / (leap ? 366.0 : 365.0);
    }
    double year = 0;
    if (!(in >> year) || !(in >> std::ws).eof()) return {};
    return year;
}

std::filesystem::path find_igrf_coefficients(const std::filesystem::path& program_directory) {
    for (const std::filesystem::path& candidate :
         {program_directory / igrf_coefficients_file_name,
          program_directory / ".." / "share" / "invsetup" / igrf_coefficients_file_name}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error)) return candidate.lexically_normal();
    }
    return {};
}

}  // namespace invsetup
