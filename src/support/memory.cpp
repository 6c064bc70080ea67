// src/support/memory.cpp - memory asked for before it is taken.
#include "support/memory.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace invsetup {

double available_memory_bytes() {
    std::ifstream meminfo("/proc/meminfo");
    std::string key;
    double kilobytes = 0;
    std::string unit;
    while (meminfo >> key >> kilobytes >> unit)
        if (key == "MemAvailable:") return kilobytes * 1024;
    const long pages = sysconf(_SC_AVPHYS_PAGES);
    const long page_size = sysconf(_SC_PAGESIZE);
    return pages > 0 && page_size > 0 ? static_cast<double>(pages) * static_cast<double>(page_size) : 0;
}

std::string count_text(double count) {
    char digits[64];
    std::snprintf(digits, sizeof digits, "%.0f", std::fabs(count));
    std::string plain(digits), out;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        if (i > 0 && (plain.size() - i) % 3 == 0) out += ',';
        out += plain[i];
    }
    return count < 0 ? "-" + out : out;
}

std::string bytes_text(double bytes) {
    static const char* const units[] = {"bytes", "kB", "MB", "GB", "TB", "PB", "EB"};
    int unit = 0;
    while (bytes >= 999.5 && unit < 6) {
        bytes /= 1000;
        ++unit;
    }
    char text[64];
    if (unit > 0 && bytes < 9.95)
        std::snprintf(text, sizeof text, "%.1f %s", bytes, units[unit]);
    else
        std::snprintf(text, sizeof text, "%.0f %s", bytes, units[unit]);
    return text;
}

std::string mesh_memory_refusal(std::string_view what, double cells, double available) {
    const double one_model = cells * sizeof(float);
    const std::string size = "The " + std::string(what) + " has " + count_text(cells) + " cells, " +
                             bytes_text(one_model) + " for one model";
    if (!(cells <= std::numeric_limits<int>::max()))
        return size + "; the files can count at most 2,147,483,647 cells.";
    if (available > 0 && 4 * one_model > available) return size + "; " + bytes_text(available) + " is available.";
    return "";
}

std::string large_mesh_warning(std::string_view what, double cells) {
    if (!(cells > large_mesh_cells)) return "";
    const double one_model = cells * sizeof(float);
    return "Warning: the " + std::string(what) + " has " + count_text(cells) + " cells, " + bytes_text(one_model) +
           " for one model and " + bytes_text(4 * one_model) +
           " for the four a run holds at once; check the cell sizes and the padding.";
}

void require_mesh_memory(std::string_view what, double cells) {
    const std::string refusal = mesh_memory_refusal(what, cells, available_memory_bytes());
    if (!refusal.empty()) throw std::runtime_error(refusal);
}

}  // namespace invsetup
