// tests/support/memory_test.cpp - sizes told in words, and meshes refused before memory is taken.
#include "support/memory.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace invsetup;

TEST(MemoryTexts, CountsAndBytes) {
    const struct {
        double count;
        const char* text;
    } counts[] = {{0, "0"}, {999, "999"}, {1000, "1,000"}, {2032128000, "2,032,128,000"}, {-12345, "-12,345"}};
    for (const auto& c : counts) EXPECT_EQ(count_text(c.count), c.text);
    const struct {
        double bytes;
        const char* text;
    } sizes[] = {{900, "900 bytes"}, {1500, "1.5 kB"}, {512e6, "512 MB"}, {8128512000, "8.1 GB"}, {23e9, "23 GB"},
                 {9.96e9, "10 GB"}, {4e15, "4.0 PB"}};
    for (const auto& s : sizes) EXPECT_EQ(bytes_text(s.bytes), s.text);
}

TEST(MeshMemory, AMeshIsRefusedWhenSeveralModelsOfItDontFit) {
    const struct {
        double cells;
        double available;
        const char* refusal;
    } cases[] = {
        {2016.0 * 2016 * 500, 23e9, "The mesh has 2,032,128,000 cells, 8.1 GB for one model; 23 GB is available."},
        {1e6, 23e9, ""},
        {1e6, 0, ""},  // memory unknown: not refused
        {5e9, 1e15,
         "The mesh has 5,000,000,000 cells, 20 GB for one model; the files can count at most 2,147,483,647 cells."},
    };
    for (const auto& c : cases) EXPECT_EQ(mesh_memory_refusal("mesh", c.cells, c.available), c.refusal);
    EXPECT_THROW(require_mesh_memory("mesh", 1e12), std::runtime_error);
    EXPECT_NO_THROW(require_mesh_memory("mesh", 1000));
}

TEST(MeshMemory, AMeshThatFitsButIsHugeIsToldOf) {
    EXPECT_EQ(large_mesh_warning("mesh", 50e6), "");
    EXPECT_EQ(large_mesh_warning("mesh", 400.0 * 400 * 400),
              "Warning: the mesh has 64,000,000 cells, 256 MB for one model and 1.0 GB for the four a run holds at "
              "once; check the cell sizes and the padding.");
}
