#include "cli/machine_volumes.h"

#include <QCoreApplication>

#include "cli/outcome.h"
#include "model/machine.h"
#include "platform/udisks_volume_monitor.h"

void ensureApplication() {
    if (QCoreApplication::instance() == nullptr) {
        static int argc = 1;
        static char name[] = "hemlark";
        static char* argv[] = {name, nullptr};
        static QCoreApplication* application = new QCoreApplication(argc, argv);
        (void)application;
    }
}

CLI::Option* addMachineOption(CLI::App& command, std::int32_t& ident) {
    const auto lastIdent = static_cast<std::int32_t>(HMKMachine::allMachines().size()) - 1;
    return command
        .add_option(
            "--machine", ident,
            "Machine profile, 0 to " + std::to_string(lastIdent) + " (hemlark machines lists them)")
        ->type_name("N")
        ->required()
        ->check(CLI::Range(0, lastIdent));
}

std::unique_ptr<HMKVolumeMonitor> openVolumeMonitor(HMKError* error) {
    ensureApplication();
    auto monitor = std::make_unique<HMKUDisksVolumeMonitor>();
    if (!waitUntilLoaded(*monitor)) {
        *error = toolError("The disk service UDisks2 did not answer.");
        return nullptr;
    }
    if (!monitor->unavailableReason().isEmpty()) {
        *error = toolError(monitor->unavailableReason().toStdString());
        return nullptr;
    }
    return monitor;
}
