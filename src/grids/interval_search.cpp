// src/grids/interval_search.cpp - binary search over a rising node table.
#include "grids/interval_search.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace invsetup {

int interval_search(const Array1<double>& table, int count, double value, int& flag) {
    if (count < 1 || count > table.size())
        throw std::out_of_range("interval search over " + std::to_string(count) + " entries of a table of " +
                                std::to_string(table.size()));
    const double* first = table.data();
    const double* last = first + count;
    if (value < first[0]) {
        flag = interval_below;
        return 1;
    }
    if (value >= last[-1]) {
        flag = interval_beyond;
        return count;
    }
    flag = interval_inside;
    // The first entry above the value follows the wanted one; value >= first[0] keeps it past the start.
    return static_cast<int>(std::upper_bound(first, last, value) - first);
}

int interval_search(const Array1<double>& table, int count, double value) {
    int flag = 0;
    return interval_search(table, count, value, flag);
}

}  // namespace invsetup
