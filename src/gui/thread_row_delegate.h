// Paints one row of the thread list: the thread's picture, a colour swatch, its name and
// below it code and palette; a thread hidden behind another shown alone is greyed out.
#pragma once

#include <functional>

#include <QImage>
#include <QStyledItemDelegate>

class HMKThreadRowDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    // picture(row) gives the thread's picture, or a null image while it is being drawn.
    HMKThreadRowDelegate(std::function<QImage(int)> picture, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    std::function<QImage(int)> picture_;
};
