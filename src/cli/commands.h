// The subcommands of the hemlark tool. Each adds itself to the application and hands back
// the function that runs it once the command line has been parsed; that function returns
// the exit code (see outcome.h).
#pragma once

#include <functional>

#include <CLI/CLI.hpp>

using HMKCommandRunner = std::function<int()>;

// hemlark info FILE... [--json] [--unit mm|in|frac]
HMKCommandRunner addInfoCommand(CLI::App& app);
// hemlark convert IN OUT [EDIT...] and hemlark convert IN... --to FORMAT [...]
HMKCommandRunner addConvertCommand(CLI::App& app);
// hemlark render IN OUT.png|OUT.svg|OUT.pdf [...]
HMKCommandRunner addRenderCommand(CLI::App& app);
// hemlark palettes [NAME]
HMKCommandRunner addPalettesCommand(CLI::App& app);
// hemlark hoops
HMKCommandRunner addHoopsCommand(CLI::App& app);
// hemlark machines
HMKCommandRunner addMachinesCommand(CLI::App& app);
// hemlark volumes --machine N
HMKCommandRunner addVolumesCommand(CLI::App& app);
// hemlark export FILE --machine N (--volume MOUNTPOINT | --dir FOLDER) [...]
HMKCommandRunner addExportCommand(CLI::App& app);
