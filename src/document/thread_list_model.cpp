#include "document/thread_list_model.h"

#include <algorithm>

#include <QColor>
#include <QDataStream>
#include <QIODevice>
#include <QSize>

#include "document/document_texts.h"

namespace {

using MenuItem = HMKThreadListModel::MenuItem;

// The keys are spelled "TREAD" on purpose: translations use them as they are.
struct MenuRow {
    MenuItem item;
    std::string_view key;
    std::string_view defaultTitle;
};
constexpr MenuRow kMenuRows[] = {
    {MenuItem::moveToBack, "MOVE_TREAD_TITLE_BACK", "Move to back"},
    {MenuItem::moveDown, "MOVE_TREAD_TITLE_DOWN", "Move down"},
    {MenuItem::moveUp, "MOVE_TREAD_TITLE_UP", "Move up"},
    {MenuItem::moveToFront, "MOVE_TREAD_TITLE_FRONT", "Move to front"},
    {MenuItem::combineWithPrevious, "COMBINE_TREAD_TITLE", "Combine with previous"},
};

// The dragged rows, archived as a list of row numbers.
QByteArray archiveRows(const QList<qint32>& rows) {
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << rows;
    return bytes;
}

QList<qint32> unarchiveRows(const QByteArray& bytes) {
    QList<qint32> rows;
    QDataStream stream(bytes);
    stream >> rows;
    return stream.status() == QDataStream::Ok ? rows : QList<qint32>();
}

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

}  // namespace

HMKThreadListModel::HMKThreadListModel(HMKDocument& document, QObject* parent)
    : QAbstractListModel(parent),
      document_(document),
      rows_(static_cast<int>(document.design().numberOfThreads())) {
    connect(&document_, &HMKDocument::designChanged, this, &HMKThreadListModel::designChanged);
    connect(&document_, &HMKDocument::shownThreadChanged, this, [this] {
        if (rows_ > 0) {
            emit dataChanged(index(0), index(rows_ - 1), {IsShownRole, ShownAloneRole});
        }
    });
}

void HMKThreadListModel::designChanged() {
    const int rows = static_cast<int>(document_.design().numberOfThreads());
    if (rows != rows_) {
        beginResetModel();
        rows_ = rows;
        endResetModel();
    } else if (rows_ > 0) {
        emit dataChanged(index(0), index(rows_ - 1));
    }
}

void HMKThreadListModel::clickRow(int row) {
    if (row == shownAloneRow()) {
        document_.showAllThreads();
    } else {
        document_.showThread(row);
    }
}

QString HMKThreadListModel::contextMenuTitle() {
    return documentText("THREAD_MENU_TITLE", "Contextual Menu");
}

std::vector<std::optional<MenuItem>> HMKThreadListModel::contextMenuItems() {
    return {MenuItem::moveToBack,  MenuItem::moveDown, MenuItem::moveUp,
            MenuItem::moveToFront, std::nullopt,       MenuItem::combineWithPrevious};
}

QString HMKThreadListModel::title(MenuItem item) {
    for (const MenuRow& row : kMenuRows) {
        if (row.item == item) {
            return documentText(row.key, row.defaultTitle);
        }
    }
    return {};
}

bool HMKThreadListModel::isEnabled(MenuItem item, int row) const {
    const int count = static_cast<int>(document_.design().numberOfThreads());
    if (row < 0 || row >= count) {
        return false;
    }
    switch (item) {
        case MenuItem::moveToBack:
        case MenuItem::moveDown:
        case MenuItem::combineWithPrevious:
            return row >= 1;
        case MenuItem::moveUp:
        case MenuItem::moveToFront:
            return row < count - 1;
    }
    return false;
}

void HMKThreadListModel::perform(MenuItem item, int row) {
    if (!isEnabled(item, row)) {
        return;
    }
    const int last = static_cast<int>(document_.design().numberOfThreads()) - 1;
    switch (item) {
        case MenuItem::moveToBack:
            document_.moveThreadFromIndex(row, 0);
            break;
        case MenuItem::moveDown:
            document_.moveThreadFromIndex(row, row - 1);
            break;
        case MenuItem::moveUp:
            document_.moveThreadFromIndex(row, row + 1);
            break;
        case MenuItem::moveToFront:
            document_.moveThreadFromIndex(row, last);
            break;
        case MenuItem::combineWithPrevious:
            // Merges block row into block row - 1.
            document_.deleteThreadWithIndex(row);
            break;
    }
}

std::optional<int> HMKThreadListModel::destinationOfDrop(int source, int target) {
    if (source == target) {
        return std::nullopt;
    }
    // Dropping above a later row puts the thread just before it, once it has left its place.
    return source < target ? target - 1 : target;
}

int HMKThreadListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

QVariant HMKThreadListModel::data(const QModelIndex& index, int role) const {
    const HMKDesign& design = document_.design();
    if (!index.isValid() || index.row() >= static_cast<int>(design.numberOfThreads())) {
        return {};
    }
    const HMKThread& thread = design.threads()[static_cast<std::size_t>(index.row())];
    switch (role) {
        case Qt::DisplayRole:
            return text(thread.name);
        case Qt::DecorationRole:
            return QColor::fromRgbF(static_cast<float>(thread.color.red()),
                                    static_cast<float>(thread.color.green()),
                                    static_cast<float>(thread.color.blue()));
        case Qt::SizeHintRole:
            return QSize(0, kRowHeight);
        case KeyRole:
            return text(thread.key);
        case PaletteRole:
            return text(thread.palette);
        case PaletteNameRole:
            return text(thread.paletteName);
        case IsShownRole:
            return thread.isShown;
        case ShownAloneRole:
            return index.row() == shownAloneRow();
        default:
            return {};
    }
}

Qt::ItemFlags HMKThreadListModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        // Drops land between rows, which Qt reports on the list itself.
        return Qt::ItemIsDropEnabled;
    }
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

QStringList HMKThreadListModel::mimeTypes() const {
    return {kThreadRowsMimeType};
}

QMimeData* HMKThreadListModel::mimeData(const QModelIndexList& indexes) const {
    QList<qint32> rows;
    for (const QModelIndex& index : indexes) {
        rows.append(index.row());
    }
    std::sort(rows.begin(), rows.end());
    auto* data = new QMimeData;
    data->setData(kThreadRowsMimeType, archiveRows(rows));
    return data;
}

bool HMKThreadListModel::canDropMimeData(const QMimeData* data, Qt::DropAction action, int, int,
                                         const QModelIndex& parent) const {
    // A valid parent is a drop onto that row; without one the drop lies between rows.
    return data && data->hasFormat(kThreadRowsMimeType) && action == Qt::MoveAction &&
           !parent.isValid();
}

bool HMKThreadListModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row,
                                      int column, const QModelIndex& parent) {
    if (!canDropMimeData(data, action, row, column, parent)) {
        return false;
    }
    const QList<qint32> rows = unarchiveRows(data->data(kThreadRowsMimeType));
    // Below the last row the list reports row -1: the drop goes above the end.
    const int target = row < 0 ? rows_ : row;
    if (!rows.isEmpty()) {
        if (auto destination = destinationOfDrop(rows.first(), target)) {
            document_.moveThreadFromIndex(rows.first(), *destination);
        }
    }
    // The document moved the thread; the list's removal of the dragged rows after a move
    // does nothing, as the model does not remove rows.
    return true;
}

Qt::DropActions HMKThreadListModel::supportedDragActions() const {
    return Qt::MoveAction;
}

Qt::DropActions HMKThreadListModel::supportedDropActions() const {
    return Qt::MoveAction;
}
