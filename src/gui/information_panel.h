// HMKInformationPanel: the facts of the design beside the canvas (format and version, size in
// the user's unit, stitches, jumps, colours, palette and hoop) above a picture of the design
// that can be dragged out of the window to hand other programs the design file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include <QLabel>
#include <QTemporaryDir>
#include <QWidget>

#include "document/document.h"
#include "platform/settings.h"

class HMKInformationPanel : public QWidget {
    Q_OBJECT
public:
    HMKInformationPanel(HMKDocument& document, HMKSettings& settings, QWidget* parent = nullptr);

    // The value shown in a row ("Stitches", ...), for tests.
    QString valueOf(const QString& row) const;
    // The file a drag out of the window hands over: the document's file while it is saved,
    // else a copy written into a temporary folder in the design's format. Empty on failure.
    std::filesystem::path fileForDrag();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void refresh();
    void requestPicture();
    void startDrag();

    HMKDocument& document_;
    HMKSettings& settings_;
    QLabel* picture_ = nullptr;
    std::vector<std::pair<QLabel*, QLabel*>> rows_;
    std::uint64_t pictureGeneration_ = 0;
    QPoint pressPosition_;
    std::unique_ptr<QTemporaryDir> dragFolder_;
};
