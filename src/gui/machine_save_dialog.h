// HMKMachineSaveDialog: the save dialog of the machine export. It opens in the machine's
// folder on the stick, lists only what the machine looks at (and the folders above the stick,
// so that it stays reachable), offers "New Folder" only to machines that read new folders,
// and accepts only a name the machine will find and read: any other name is refused with the
// reason, and the dialog stays open.
#pragma once

#include <filesystem>
#include <optional>

#include <QFileDialog>

#include "document/volume_layout.h"

class HMKMachineSaveDialog : public QFileDialog {
    Q_OBJECT
public:
    // Proposes proposedName (without extension) in the machine's first format.
    HMKMachineSaveDialog(HMKVolumeLayout layout, const QString& proposedName,
                         QWidget* parent = nullptr);

    // Shows the dialog through the dialog hooks; the accepted file, or none when cancelled.
    static std::optional<std::filesystem::path> ask(QWidget* parent, const HMKVolumeLayout& layout,
                                                    const QString& proposedName);

    // Refuses a name the machine would not find or read.
    void accept() override;

private:
    HMKVolumeLayout layout_;
};
