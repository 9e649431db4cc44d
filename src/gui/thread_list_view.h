// HMKThreadListView: the list of the design's threads beside the canvas, one 64-pixel row
// per colour block in sewing order with a picture of that thread's stitches, its colour,
// name, code and palette. A click shows the thread alone and a second click all of them;
// the context menu moves and combines threads; rows are reordered by dragging (a line shows
// where the row lands); a double click recolours the thread. The rules live in
// HMKThreadListModel; this view only shows them.
#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include <QImage>
#include <QListView>

#include "document/thread_list_model.h"

class QMenu;

class HMKThreadListView : public QListView {
    Q_OBJECT
public:
    HMKThreadListView(HMKDocument& document, QWidget* parent = nullptr);

    HMKThreadListModel& threadModel() { return model_; }
    // The context menu for a row (built fresh, with the enabling rules applied).
    QMenu* createContextMenu(int row, QWidget* parent);
    // Opens the colour chooser for a row (double click).
    void chooseColor(int row);
    // The picture of a thread's stitches, once drawn.
    QImage threadPicture(int row) const;

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void requestPictures();

    HMKDocument& document_;
    HMKThreadListModel model_;
    std::map<int, QImage> pictures_;
    std::uint64_t pictureGeneration_ = 0;
};
