// The hemlark command-line tool: the design operations of the application, in batches.
#include <CLI/CLI.hpp>

#include <iostream>

int main(int argc, char** argv) {
    CLI::App app{"hemlark - inspect, edit and convert machine-embroidery designs"};
    app.set_version_flag("--version", std::string("hemlark ") + HEMLARK_VERSION);
    app.require_subcommand(0);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        int code = app.exit(e);
        return code == 0 ? 0 : 2;
    }
    std::cout << app.help();
    return 0;
}
