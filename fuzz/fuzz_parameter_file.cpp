// fuzz/fuzz_parameter_file.cpp - a definition file of any version, read as the read command reads it.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "commands/commands.h"
#include "fuzz_support.h"
#include "session.h"
#include "support/dialogue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace invsetup;
    const std::string path = fuzz::input_file("definition.inp", data, size);
    HeadlessDialogue dialogue;
    dialogue.file_answers.push_back(path);
    Session session(dialogue);
    read_command(session, 0);
    return 0;
}
