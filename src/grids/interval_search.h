// src/grids/interval_search.h - the interval search of the mesh and model lookups: which cell of a
// rising table of nodes holds a value.
#pragma once
#include "support/array1.h"

namespace invsetup {

/// Where a value lies against the table: below its first entry, inside it, at or beyond its last.
enum IntervalFlag : int { interval_below = -1, interval_inside = 0, interval_beyond = 1 };

/// The largest index `left` in 1..count with table[left] <= value, for a rising table of `count`
/// entries (element 1 first). A value below table[1] gives 1 with `flag` -1; a value at or above
/// table[count] gives `count` with `flag` 1; otherwise `flag` is 0. Equal entries are allowed: the
/// last of them wins. `count` must be at least 1 and at most the table's size (out_of_range otherwise).
int interval_search(const Array1<double>& table, int count, double value, int& flag);
/// The same without the flag.
int interval_search(const Array1<double>& table, int count, double value);
/// The same over the whole table.
inline int interval_search(const Array1<double>& table, double value) {
    return interval_search(table, table.size(), value);
}

}  // namespace invsetup
