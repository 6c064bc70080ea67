// src/support/memory.h - memory asked for before it is taken: tables sized from counts in files.
#pragma once
#include <string>
#include <string_view>

namespace invsetup {

/// Bytes of memory the system can give now (MemAvailable where the system says it), 0 when unknown.
double available_memory_bytes();

/// A count with thousands separators: "2,032,128,000".
std::string count_text(double count);
/// Bytes to two significant figures at most: "8.1 GB", "23 GB", "512 MB", "900 bytes".
std::string bytes_text(double bytes);

/// "" when a mesh of `cells` cells fits: a run holds the cell states and several models (model,
/// reference, bounds) of single reals at once, so four single reals a cell must fit in `available`
/// bytes. Otherwise the refusal: "The <what> has 2,032,128,000 cells, 8.1 GB for one model; 23 GB is
/// available." Also refused: more cells than a count of the files can hold (2,147,483,647).
std::string mesh_memory_refusal(std::string_view what, double cells, double available);
/// Meshes above this many cells fit but are told of: each model file of the run is then hundreds of
/// megabytes, and the outside programs take hours.
constexpr double large_mesh_cells = 50e6;
/// "" up to large_mesh_cells; above, the warning: "Warning: the <what> has 64,000,000 cells, 256 MB
/// for one model and 1.0 GB for the four a run holds at once; check the cell sizes and the padding."
std::string large_mesh_warning(std::string_view what, double cells);
/// mesh_memory_refusal against the memory available now; throws std::runtime_error with the refusal.
void require_mesh_memory(std::string_view what, double cells);

}  // namespace invsetup
