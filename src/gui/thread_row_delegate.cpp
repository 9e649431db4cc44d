#include "gui/thread_row_delegate.h"

#include <QApplication>
#include <QPainter>

#include "document/thread_list_model.h"

namespace {

constexpr int kPadding = 4;
constexpr int kSwatchWidth = 14;

}  // namespace

HMKThreadRowDelegate::HMKThreadRowDelegate(std::function<QImage(int)> picture, QObject* parent)
    : QStyledItemDelegate(parent), picture_(std::move(picture)) {}

QSize HMKThreadRowDelegate::sizeHint(const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const {
    return QSize(QStyledItemDelegate::sizeHint(option, index).width(),
                 HMKThreadListModel::kRowHeight);
}

void HMKThreadRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    QStyleOptionViewItem background = option;
    initStyleOption(&background, index);
    background.text.clear();
    background.icon = QIcon();
    background.features &= ~QStyleOptionViewItem::HasDecoration;
    if (index.data(HMKThreadListModel::ShownAloneRole).toBool()) {
        background.state |= QStyle::State_Selected;
    }
    QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &background, painter, option.widget);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect.adjusted(kPadding, kPadding, -kPadding, -kPadding);
    const int side = row.height();
    // The thread's stitches, on a light card so that dark threads show.
    const QRect pictureRect(row.left(), row.top(), side, side);
    painter->setPen(option.palette.color(QPalette::Mid));
    painter->setBrush(QColor(250, 250, 250));
    painter->drawRoundedRect(QRectF(pictureRect).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    const QImage picture = picture_(index.row());
    if (!picture.isNull()) {
        painter->drawImage(pictureRect.adjusted(1, 1, -1, -1), picture);
    }
    const QRect swatch(pictureRect.right() + kPadding + 2, row.top(), kSwatchWidth, side);
    painter->setBrush(index.data(Qt::DecorationRole).value<QColor>());
    painter->setPen(QColor(0, 0, 0, 90));
    painter->drawRoundedRect(QRectF(swatch).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);

    const bool shown = index.data(HMKThreadListModel::IsShownRole).toBool();
    const bool selected = background.state & QStyle::State_Selected;
    QColor text = option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text);
    if (!shown) {
        text.setAlphaF(0.45f);
    }
    const QRect textRect(swatch.right() + 2 * kPadding, row.top(),
                         row.right() - swatch.right() - 2 * kPadding, side);
    QFont nameFont = option.font;
    nameFont.setBold(true);
    painter->setFont(nameFont);
    painter->setPen(text);
    const QString name =
        QStringLiteral("%1. %2").arg(index.row() + 1).arg(index.data(Qt::DisplayRole).toString());
    const QRect nameRect(textRect.left(), textRect.top(), textRect.width(), side / 2);
    painter->drawText(nameRect, Qt::AlignLeft | Qt::AlignBottom,
                      QFontMetrics(nameFont).elidedText(name, Qt::ElideRight, nameRect.width()));
    painter->setFont(option.font);
    QStringList details;
    for (int role : {int(HMKThreadListModel::KeyRole), int(HMKThreadListModel::PaletteNameRole)}) {
        const QString detail = index.data(role).toString();
        if (!detail.isEmpty()) {
            details.append(detail);
        }
    }
    const QRect detailRect(textRect.left(), textRect.top() + side / 2 + 2, textRect.width(),
                           side / 2 - 2);
    text.setAlphaF(text.alphaF() * 0.75f);
    painter->setPen(text);
    painter->drawText(detailRect, Qt::AlignLeft | Qt::AlignTop,
                      QFontMetrics(option.font)
                          .elidedText(details.join(QStringLiteral(" \u00B7 ")), Qt::ElideRight,
                                      detailRect.width()));
    painter->restore();
}
