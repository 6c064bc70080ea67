// apps/cli/main.cpp - the invsetup command line.
#include <CLI/CLI.hpp>

#include <iostream>

int main(int argc, char** argv) {
    CLI::App app{"invsetup: prepares 3D magnetic and gravity inversions"};
    app.set_version_flag("--version", std::string("invsetup ") + INVSETUP_VERSION);
    app.require_subcommand(1);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        int code = app.exit(error);
        return code == 0 ? 0 : 2;
    }
    return 0;
}
