// fuzz/fuzz_mesh_file.cpp - a mesh file of any form (the first byte picks the kind of model asked for).
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "modelfiles/mesh_file_read.h"
#include "session.h"
#include "support/dialogue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace invsetup;
    if (size == 0) return 0;
    const std::string path = fuzz::input_file("mesh.msh", data + 1, size - 1);
    HeadlessDialogue dialogue;
    Session session(dialogue);
    read_mesh_file(session, path, data[0] % 4);
    return 0;
}
