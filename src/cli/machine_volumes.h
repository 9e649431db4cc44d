// What `hemlark volumes` and `hemlark export` share: the machine chosen with --machine, the
// removable volumes from the desktop's disk service.
#pragma once

#include <cstdint>
#include <memory>

#include <CLI/CLI.hpp>

#include "model/error.h"
#include "platform/volume_monitor.h"

// D-Bus replies and the export's background clean-up arrive through an event loop, which
// needs an application object; this makes one (kept until the process ends) if there is none.
void ensureApplication();

// Adds the required --machine N option (0 to 8, the idents `hemlark machines` lists).
CLI::Option* addMachineOption(CLI::App& command, std::int32_t& ident);

// The disk service's volumes, listed once the tool has an event loop; fills error (the
// service is missing) and returns none when they cannot be listed.
std::unique_ptr<HMKVolumeMonitor> openVolumeMonitor(HMKError* error);
