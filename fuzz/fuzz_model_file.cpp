// fuzz/fuzz_model_file.cpp - a model file for a small mesh of 3 x 2 x 2 cells.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "modelfiles/mesh_file_read.h"
#include "modelfiles/model_file_read.h"
#include "session.h"
#include "support/dialogue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace invsetup;
    HeadlessDialogue dialogue;
    Session session(dialogue);
    static const std::uint8_t mesh_text[] = "3 2 2\n0 0 0\n3*10\n2*10\n2*5\n";
    const std::string mesh = fuzz::input_file("model.msh", mesh_text, sizeof mesh_text - 1);
    if (read_mesh_file(session, mesh) != 0) return 0;
    const std::string path = fuzz::input_file("model.den", data, size);
    load_model(session, path);
    return 0;
}
