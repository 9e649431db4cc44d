#include "gui/thread_list_view.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QMenu>
#include <QPointer>
#include <QThreadPool>

#include "gui/thread_color_dialog.h"
#include "gui/thread_row_delegate.h"
#include "platform/design_picture.h"

namespace {

constexpr int kPictureSide = HMKThreadListModel::kRowHeight - 10;

}  // namespace

HMKThreadListView::HMKThreadListView(HMKDocument& document, QWidget* parent)
    : QListView(parent), document_(document), model_(document) {
    setModel(&model_);
    setItemDelegate(new HMKThreadRowDelegate([this](int row) { return threadPicture(row); }, this));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setDragDropOverwriteMode(false);
    setDropIndicatorShown(true);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setMinimumWidth(220);
    connect(this, &QListView::clicked, this,
            [this](const QModelIndex& index) { model_.clickRow(index.row()); });
    connect(this, &QListView::doubleClicked, this,
            [this](const QModelIndex& index) { chooseColor(index.row()); });
    connect(&document_, &HMKDocument::designChanged, this, &HMKThreadListView::requestPictures);
    requestPictures();
}

QImage HMKThreadListView::threadPicture(int row) const {
    const auto found = pictures_.find(row);
    return found == pictures_.end() ? QImage() : found->second;
}

void HMKThreadListView::requestPictures() {
    const std::uint64_t generation = ++pictureGeneration_;
    const HMKDesign& design = document_.design();
    if (design.stitches().empty()) {
        pictures_.clear();
        return;
    }
    // Every thread's picture walks the whole design, so they are drawn off the GUI thread.
    auto copy = std::make_shared<HMKDesign>(design);
    // The pictures show the threads as sewn, whichever is shown alone.
    for (std::size_t i = 0; i < copy->threads().size(); ++i) {
        copy->setIsShown(true, static_cast<std::int32_t>(i));
    }
    copy->deselectAll();
    const qreal ratio = devicePixelRatioF();
    QPointer<HMKThreadListView> view(this);
    QThreadPool::globalInstance()->start([view, copy, generation, ratio] {
        std::map<int, QImage> pictures;
        HMKPictureOptions options;
        options.widthPixels = options.heightPixels = static_cast<int>(kPictureSide * ratio);
        options.marginPixels = 2;
        for (std::size_t thread = 0; thread < copy->threads().size(); ++thread) {
            options.thread = static_cast<std::int32_t>(thread);
            QImage picture = renderDesignImage(*copy, options);
            picture.setDevicePixelRatio(ratio);
            pictures[static_cast<int>(thread)] = picture;
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [view, pictures = std::move(pictures), generation]() mutable {
                if (view && view->pictureGeneration_ == generation) {
                    view->pictures_ = std::move(pictures);
                    view->viewport()->update();
                }
            },
            Qt::QueuedConnection);
    });
}

QMenu* HMKThreadListView::createContextMenu(int row, QWidget* parent) {
    auto* menu = new QMenu(HMKThreadListModel::contextMenuTitle(), parent);
    for (const auto& item : HMKThreadListModel::contextMenuItems()) {
        if (!item) {
            menu->addSeparator();
            continue;
        }
        QAction* action = menu->addAction(HMKThreadListModel::title(*item));
        action->setEnabled(model_.isEnabled(*item, row));
        connect(action, &QAction::triggered, this,
                [this, item = *item, row] { model_.perform(item, row); });
    }
    return menu;
}

void HMKThreadListView::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(viewport()->mapFromGlobal(event->globalPos()));
    if (!index.isValid()) {
        return;
    }
    QMenu* menu = createContextMenu(index.row(), this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // Not exec(): the menu must not hold a nested event loop while the document changes.
    menu->popup(event->globalPos());
}

void HMKThreadListView::chooseColor(int row) {
    const HMKDesign& design = document_.design();
    if (row < 0 || row >= static_cast<int>(design.numberOfThreads())) {
        return;
    }
    const HMKThread& thread = design.threads()[static_cast<std::size_t>(row)];
    if (auto choice = HMKThreadColorDialog::ask(this, thread)) {
        document_.changeWithUndoThread(row, choice->color, choice->palette);
    }
}
