// "Export to Machine…" as the document window runs it: the export dialog, the machine's save
// dialog on the chosen stick, then writing the copy and, in the background with a progress
// window, the clean-up and the eject, ending with the message that says how it went.
#pragma once

#include "document/document.h"
#include "platform/settings.h"
#include "platform/volume_monitor.h"

class QWidget;

// The desktop's removable volumes (the UDisks2 disk service), shared by every window and made
// on first use.
HMKVolumeMonitor& desktopVolumeMonitor();

// Exports the document's design to a machine's stick; parent is the document's window. The
// dialogs go through the dialog hooks, the final message through the hooks' alert.
void exportToMachine(QWidget* parent, HMKDocument& document, HMKSettings& settings,
                     HMKVolumeMonitor& monitor);
