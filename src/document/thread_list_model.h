// The thread list beside the design: one row per thread (colour block) in sewing order, so
// row i is thread i. The model holds the list's rules and the view only shows them: a click
// shows a thread alone and a second click shows all again, the context menu's items with
// their enabling rules and actions, and drag reordering (drops between rows only, mapped to
// the document's thread move). Every change goes through the document as an undoable step.
//
// For the view: use QAbstractItemView::DragDrop with Qt::MoveAction as the default drop
// action, build the context menu from contextMenuItems(), and call clickRow() on a click.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <QAbstractListModel>
#include <QMimeData>

#include "document/document.h"

// The drag type of thread rows (the archived rows being dragged).
inline constexpr char kThreadRowsMimeType[] = "BasicTableViewDragAndDropDataType";

class HMKThreadListModel : public QAbstractListModel {
    Q_OBJECT
public:
    // Every row is this high, in pixels.
    static constexpr int kRowHeight = 64;

    // Data of a row beyond Qt::DisplayRole (the thread's name) and Qt::DecorationRole (its
    // QColor).
    enum Role {
        KeyRole = Qt::UserRole + 1,  // QString: the manufacturer's thread code
        PaletteRole,                 // QString: palette id
        PaletteNameRole,             // QString: palette display name
        IsShownRole,                 // bool
        ShownAloneRole,              // bool: this row's thread is shown alone
    };

    // The context menu's actions; "up" and "front" mean later in the sewing order.
    enum class MenuItem { moveToBack, moveDown, moveUp, moveToFront, combineWithPrevious };

    explicit HMKThreadListModel(HMKDocument& document, QObject* parent = nullptr);

    // --- Clicks --------------------------------------------------------------------------
    // Shows the row's thread alone, or all threads when it was already shown alone.
    void clickRow(int row);
    // The row shown alone, or -1.
    int shownAloneRow() const { return document_.shownThread(); }

    // --- Context menu ----------------------------------------------------------------------
    // The menu's title ("Contextual Menu").
    static QString contextMenuTitle();
    // The items in menu order; none marks the separator.
    static std::vector<std::optional<MenuItem>> contextMenuItems();
    static QString title(MenuItem item);
    bool isEnabled(MenuItem item, int row) const;
    // Runs the item for the row; does nothing when it is not enabled there.
    void perform(MenuItem item, int row);

    // --- Drag reordering -------------------------------------------------------------------
    // Where a thread dragged from row source ends up when dropped above row target; none
    // when it stays where it is.
    static std::optional<int> destinationOfDrop(int source, int target);

    // --- QAbstractListModel ----------------------------------------------------------------
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    // Only moves dropped between rows; a drop onto a row is refused.
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;

private:
    void designChanged();

    HMKDocument& document_;
    int rows_ = 0;
};
