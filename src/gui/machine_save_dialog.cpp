#include "gui/machine_save_dialog.h"

#include <QFileInfo>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>
#include <QUrl>

#include "document/document.h"
#include "gui/dialog_hooks.h"

namespace {

// What the dialog lists: the layout's filter, plus the folders on the way to the stick.
class LayoutFilter : public QSortFilterProxyModel {
public:
    LayoutFilter(HMKVolumeLayout layout, QObject* parent)
        : QSortFilterProxyModel(parent),
          layout_(std::move(layout)),
          root_(QString::fromStdString(layout_.volumeRoot().string())) {}

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
        const auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
        if (files == nullptr) {
            return true;
        }
        const QString path = files->filePath(files->index(row, 0, parent));
        const QString folder = path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
        if (path == root_ || root_.startsWith(folder)) {
            return true;
        }
        return layout_.shouldShow(path.toStdString());
    }

private:
    HMKVolumeLayout layout_;
    QString root_;
};

}  // namespace

HMKMachineSaveDialog::HMKMachineSaveDialog(HMKVolumeLayout layout, const QString& proposedName,
                                           QWidget* parent)
    : QFileDialog(parent), layout_(std::move(layout)) {
    // The filter and the refusal need Qt's own dialog.
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::ReadOnly, !layout_.allowsNewFolders());
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setWindowTitle(tr("Export"));
    setLabelText(QFileDialog::Accept, tr("Export"));
    setProxyModel(new LayoutFilter(layout_, this));
    // The stick is the only place worth a shortcut here.
    setSidebarUrls({QUrl::fromLocalFile(QString::fromStdString(layout_.volumeRoot().string()))});
    const QString format =
        QString::fromStdString(layout_.machine().allowedFileTypes().front()).toLower();
    setDefaultSuffix(format);
    setDirectory(QString::fromStdString(layout_.defaultFolder().string()));
    selectFile(proposedName + QLatin1Char('.') + format);
}

std::optional<std::filesystem::path> HMKMachineSaveDialog::ask(QWidget* parent,
                                                               const HMKVolumeLayout& layout,
                                                               const QString& proposedName) {
    HMKMachineSaveDialog dialog(layout, proposedName, parent);
    if (dialogHooks().runDialog(dialog) != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return dialog.selectedFiles().first().toStdString();
}

void HMKMachineSaveDialog::accept() {
    const QStringList files = selectedFiles();
    // A folder typed or picked is opened, as in any save dialog.
    if (files.isEmpty() || QFileInfo(files.first()).isDir()) {
        QFileDialog::accept();
        return;
    }
    const QString refusal = layout_.refusal(files.first().toStdString());
    if (!refusal.isEmpty()) {
        dialogHooks().alert(this, HMKAlert::message(tr("Export"), refusal));
        return;
    }
    QFileDialog::accept();
}
