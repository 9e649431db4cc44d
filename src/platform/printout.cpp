#include "platform/printout.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

#include "formats/file_io.h"
#include "platform/design_picture.h"
#include "platform/painter_context.h"

namespace {

constexpr double kUnitsPerMillimetre = 10;
constexpr double kMillimetresPerInch = 25.4;
// Stitches reach half their outline width beyond their end points.
constexpr double kStitchReachUnits = 2;
// Room kept around the design and hoop on the template, in millimetres.
constexpr double kTemplateRoom = 5;
constexpr double kTemplateHeader = 16;
constexpr double kFooter = 6;
constexpr double kTitleHeight = 10;
constexpr double kRowHeight = 6.5;
constexpr double kTableGap = 6;
// The worksheet's picture takes this share of the page width and at most this share of
// its height.
constexpr double kPictureWidthShare = 0.62;
constexpr double kPictureHeightShare = 0.45;
constexpr int kPdfResolution = 600;
constexpr double kPdfMargin = 10;

QString text(const std::string& value) {
    return QString::fromStdString(value);
}

QString length(double millimetres, HMKMeasurementUnit unit) {
    return text(HMKValueTransformer::transformedValue(millimetres, unit));
}

HMKRect united(const HMKRect& a, const HMKRect& b) {
    const double left = std::min(a.x, b.x);
    const double bottom = std::min(a.y, b.y);
    return {left, bottom, std::max(a.x + a.width, b.x + b.width) - left,
            std::max(a.y + a.height, b.y + b.height) - bottom};
}

HMKRect widened(const HMKRect& rect, double by) {
    return {rect.x - by, rect.y - by, rect.width + 2 * by, rect.height + 2 * by};
}

bool hasStitches(const HMKDesign& design) {
    return !design.stitches().empty() && !design.threads().empty() &&
           design.xMin() <= design.xMax() && design.yMin() <= design.yMax();
}

HMKRect designRect(const HMKDesign& design) {
    if (!hasStitches(design)) {
        return {-50, -50, 100, 100};
    }
    return widened({design.xMin(), design.yMin(), double(design.xMax()) - design.xMin(),
                    double(design.yMax()) - design.yMin()},
                   kStitchReachUnits);
}

std::optional<HMKRect> hoopRect(const HMKDesign& design) {
    if (!design.designHoop()) {
        return std::nullopt;
    }
    const double width = design.designHoop()->width() * kUnitsPerMillimetre;
    const double height = design.designHoop()->height() * kUnitsPerMillimetre;
    return HMKRect{-width / 2, -height / 2, width, height};
}

// Millimetres on the page (origin at the printable area's top-left) to device pixels.
class Page {
public:
    Page(QPainter& painter, double dotsPerMillimetre)
        : painter_(painter), dotsPerMillimetre_(dotsPerMillimetre) {}
    QPainter& painter() { return painter_; }
    double dots(double millimetres) const { return millimetres * dotsPerMillimetre_; }
    QPointF point(double x, double y) const { return {dots(x), dots(y)}; }
    QRectF rect(double x, double y, double width, double height) const {
        return {dots(x), dots(y), dots(width), dots(height)};
    }
    void write(const QRectF& millimetres, int flags, const QString& line, double points,
               bool bold = false, QColor color = Qt::black) {
        QFont font = painter_.font();
        font.setPointSizeF(points);
        font.setBold(bold);
        // Any letter spacing turns ligatures off, so that "fl" in a thread name stays two
        // letters that a PDF reader can find and copy.
        font.setLetterSpacing(QFont::AbsoluteSpacing, 0.02);
        painter_.setFont(font);
        painter_.setPen(color);
        const QRectF box =
            rect(millimetres.x(), millimetres.y(), millimetres.width(), millimetres.height());
        painter_.drawText(
            box, flags,
            QFontMetricsF(font, painter_.device()).elidedText(line, Qt::ElideRight, box.width()));
    }
    QPen pen(const QColor& color, double widthMillimetres) const {
        QPen pen(color, dots(widthMillimetres));
        pen.setCosmetic(false);
        return pen;
    }

private:
    QPainter& painter_;
    double dotsPerMillimetre_;
};

// The design and what goes with it (grid, hoop, centre, first and last stitch), drawn with a
// transform from design units to device pixels.
void paintScene(Page& page, const HMKDesign& design, const QTransform& designToDevice,
                const HMKRect& visible, const HMKPrintOptions& options, bool templateMode) {
    QPainter& painter = page.painter();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double unitsPerDot = 1 / designToDevice.m11();
    const auto designPen = [&](const QColor& color, double millimetres) {
        QPen pen(color, page.dots(millimetres) * unitsPerDot);
        return pen;
    };
    painter.setTransform(designToDevice);
    const std::optional<HMKRect> hoop = hoopRect(design);
    if (options.showGrid) {
        painter.setPen(designPen(QColor(0, 0, 0, 60), 0.1));
        const double spacing = 10 * kUnitsPerMillimetre;
        for (double x = std::ceil(visible.x / spacing) * spacing; x <= visible.x + visible.width;
             x += spacing) {
            painter.drawLine(QPointF(x, visible.y), QPointF(x, visible.y + visible.height));
        }
        for (double y = std::ceil(visible.y / spacing) * spacing; y <= visible.y + visible.height;
             y += spacing) {
            painter.drawLine(QPointF(visible.x, y), QPointF(visible.x + visible.width, y));
        }
    }
    if (hoop && (options.showHoop || templateMode)) {
        painter.setPen(designPen(QColor(60, 60, 60), templateMode ? 0.3 : 0.4));
        painter.setBrush(Qt::NoBrush);
        const QRectF rect(hoop->x, hoop->y, hoop->width, hoop->height);
        if (design.designHoop()->isRounded()) {
            painter.drawEllipse(rect);
        } else {
            const double radius = std::min(rect.width(), rect.height()) * 0.06;
            painter.drawRoundedRect(rect, radius, radius);
        }
    }
    {
        HMKPainterContext context(painter);
        design.drawDesignInRect(visible, context, !options.fastMode, options.showJumps,
                                options.showStructure);
    }
    painter.setTransform(designToDevice);
    if (templateMode) {
        // Lines through the centre across the whole hoop, to line up with its marks.
        const HMKRect across = hoop ? *hoop : visible;
        QPen dashed = designPen(QColor(30, 90, 200), 0.2);
        dashed.setDashPattern({8, 4});
        painter.setPen(dashed);
        painter.drawLine(QPointF(across.x, 0), QPointF(across.x + across.width, 0));
        painter.drawLine(QPointF(0, across.y), QPointF(0, across.y + across.height));
    }
    if (options.showCenter || templateMode) {
        const double arm = (templateMode ? 10 : 4) * kUnitsPerMillimetre;
        painter.setPen(designPen(QColor(30, 90, 200), templateMode ? 0.4 : 0.3));
        painter.drawLine(QPointF(-arm, 0), QPointF(arm, 0));
        painter.drawLine(QPointF(0, -arm), QPointF(0, arm));
    }
    if (hasStitches(design)) {
        const auto ring = [&](HMKPoint at, const QColor& color) {
            painter.setPen(designPen(color, 0.3));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(QPointF(at.x, at.y), 15, 15);
        };
        if (options.showFirst) {
            ring(design.firstStitch(), QColor(20, 160, 60));
        }
        if (options.showLast) {
            ring(design.lastStitch(), QColor(210, 40, 40));
        }
    }
    painter.restore();
}

// Maps the design rectangle onto the page rectangle (both fitted, centred, y flipped).
QTransform fitTransform(const Page& page, const HMKRect& world, const QRectF& target,
                        double millimetresPerUnit) {
    const double scale = page.dots(millimetresPerUnit);
    const QPointF centre = page.point(target.center().x(), target.center().y());
    return QTransform(scale, 0, 0, -scale, centre.x() - scale * (world.x + world.width / 2),
                      centre.y() + scale * (world.y + world.height / 2));
}

// --- Worksheet ---------------------------------------------------------------------------------

struct ThreadRow {
    const HMKThread* thread;
    std::uint64_t stitches;
};

std::vector<ThreadRow> threadRows(const HMKDesign& design) {
    std::vector<ThreadRow> rows;
    for (const HMKThread& thread : design.threads()) {
        rows.push_back({&thread, 0});
    }
    std::size_t block = 0;
    for (const HMKStitch& stitch : design.stitches()) {
        block += stitch.isColorChange;
        if (block < rows.size() && !stitch.isJumpStitch && !stitch.isColorChange) {
            ++rows[block].stitches;
        }
    }
    return rows;
}

struct WorksheetLayout {
    double pictureHeight;
    int rowsOnFirstPage;
    int rowsPerPage;
    int pages;
};

WorksheetLayout worksheetLayout(const HMKDesign& design, QSizeF page) {
    WorksheetLayout layout;
    layout.pictureHeight =
        std::min(page.width() * kPictureWidthShare, page.height() * kPictureHeightShare);
    const double firstTableTop = kTitleHeight + layout.pictureHeight + kTableGap + kRowHeight;
    const double usable = page.height() - kFooter;
    layout.rowsOnFirstPage = std::max(0, int((usable - firstTableTop) / kRowHeight));
    layout.rowsPerPage = std::max(1, int((usable - kTitleHeight - kRowHeight) / kRowHeight));
    const int rows = static_cast<int>(design.threads().size());
    const int rest = std::max(0, rows - layout.rowsOnFirstPage);
    layout.pages = 1 + (rest + layout.rowsPerPage - 1) / layout.rowsPerPage;
    return layout;
}

QString designTitle(const HMKDesign& design) {
    const std::string name = std::filesystem::path(design.designName()).filename().string();
    return name.empty() ? QObject::tr("Untitled design") : text(name);
}

void paintFooter(Page& page, QSizeF size, int number, int count) {
    page.write({0, size.height() - kFooter + 1, size.width(), kFooter - 1},
               Qt::AlignHCenter | Qt::AlignBottom,
               QObject::tr("%1 \u2014 page %2 of %3")
                   .arg(QStringLiteral("Hemlark"))
                   .arg(number)
                   .arg(count),
               7, false, Qt::darkGray);
}

void paintFacts(Page& page, const HMKDesign& design, const HMKPrintOptions& options,
                const QRectF& box) {
    const QLocale locale;
    const HMKMeasurementUnit unit = options.unit;
    const std::vector<std::pair<QString, QString>> facts = {
        {QObject::tr("Format"), text(design.designType())},
        {QObject::tr("Size"), QObject::tr("%1 \u00D7 %2")
                                  .arg(length(design.designWidth() / kUnitsPerMillimetre, unit),
                                       length(design.designHeight() / kUnitsPerMillimetre, unit))},
        {QObject::tr("Stitches"), locale.toString(design.numberOfStitches())},
        {QObject::tr("Jumps"), locale.toString(design.numberOfJumps())},
        {QObject::tr("Colours"), QObject::tr("%1 (%2 threads)")
                                     .arg(design.numberOfDifferentColors())
                                     .arg(design.numberOfThreads())},
        {QObject::tr("Sewing time"),
         QObject::tr("%1 at %2 stitches/min")
             .arg(text(sewingTimeText(sewingSecondsOf(design.stitches(), options.timing))),
                  locale.toString(options.timing.stitchesPerMinute))},
        {QObject::tr("Hoop"),
         design.designHoop() ? text(design.designHoop()->description()) : QObject::tr("None")},
    };
    double y = box.y();
    for (const auto& [label, value] : facts) {
        page.write({box.x(), y, box.width(), 4.5}, Qt::AlignLeft | Qt::AlignVCenter, label, 8, true,
                   Qt::darkGray);
        page.write({box.x(), y + 4.2, box.width(), 5}, Qt::AlignLeft | Qt::AlignVCenter, value, 10);
        y += 10.5;
    }
}

struct Column {
    const char* title;
    double width;  // millimetres; 0 takes what is left
    int alignment;
};

void paintThreadTable(Page& page, const std::vector<ThreadRow>& rows, std::size_t first,
                      std::size_t count, double top, double width) {
    const Column columns[] = {
        {QT_TR_NOOP("#"), 8, Qt::AlignRight},       {QT_TR_NOOP("Colour"), 16, Qt::AlignLeft},
        {QT_TR_NOOP("Name"), 0, Qt::AlignLeft},     {QT_TR_NOOP("Code"), 22, Qt::AlignLeft},
        {QT_TR_NOOP("Palette"), 44, Qt::AlignLeft}, {QT_TR_NOOP("Stitches"), 22, Qt::AlignRight},
    };
    double fixed = 0;
    for (const Column& column : columns) {
        fixed += column.width + 2;
    }
    const auto widthOf = [&](const Column& column) {
        return column.width > 0 ? column.width : std::max(width - fixed, 10.0);
    };
    QPainter& painter = page.painter();
    double x = 0;
    for (const Column& column : columns) {
        page.write({x, top, widthOf(column), kRowHeight}, column.alignment | Qt::AlignVCenter,
                   QObject::tr(column.title), 8, true, Qt::darkGray);
        x += widthOf(column) + 2;
    }
    painter.setPen(page.pen(Qt::gray, 0.2));
    painter.drawLine(page.point(0, top + kRowHeight), page.point(width, top + kRowHeight));
    const QLocale locale;
    for (std::size_t i = first; i < first + count && i < rows.size(); ++i) {
        const double y = top + kRowHeight * double(i - first + 1);
        const HMKThread& thread = *rows[i].thread;
        const QString cells[] = {
            QString::number(i + 1),
            QString(),
            text(thread.name),
            text(thread.key),
            text(thread.paletteName.empty() ? thread.palette : thread.paletteName),
            locale.toString(static_cast<qulonglong>(rows[i].stitches)),
        };
        x = 0;
        for (std::size_t c = 0; c < std::size(columns); ++c) {
            const double cellWidth = widthOf(columns[c]);
            if (c == 1) {
                const HMKColor& color = thread.color;
                painter.setPen(page.pen(Qt::black, 0.2));
                painter.setBrush(QColor::fromRgbF(float(std::clamp(color.red(), 0.0, 1.0)),
                                                  float(std::clamp(color.green(), 0.0, 1.0)),
                                                  float(std::clamp(color.blue(), 0.0, 1.0))));
                painter.drawRect(page.rect(x, y + 1.2, cellWidth - 2, kRowHeight - 2.4));
                painter.setBrush(Qt::NoBrush);
            } else {
                page.write({x, y, cellWidth, kRowHeight}, columns[c].alignment | Qt::AlignVCenter,
                           cells[c], 9);
            }
            x += cellWidth + 2;
        }
        painter.setPen(page.pen(QColor(0, 0, 0, 40), 0.1));
        painter.drawLine(page.point(0, y + kRowHeight), page.point(width, y + kRowHeight));
    }
}

bool paintWorksheet(QPainter& painter, QPagedPaintDevice& device, const HMKDesign& design,
                    const HMKPrintOptions& options, double dotsPerMillimetre, QSizeF size) {
    Page page(painter, dotsPerMillimetre);
    const WorksheetLayout layout = worksheetLayout(design, size);
    const std::vector<ThreadRow> rows = threadRows(design);
    const QString title = designTitle(design);

    page.write({0, 0, size.width(), kTitleHeight - 2}, Qt::AlignLeft | Qt::AlignVCenter, title, 16,
               true);
    const QRectF picture(0, kTitleHeight, size.width() * kPictureWidthShare, layout.pictureHeight);
    painter.setPen(page.pen(QColor(0, 0, 0, 60), 0.2));
    painter.drawRect(page.rect(picture.x(), picture.y(), picture.width(), picture.height()));
    HMKRect world = designRect(design);
    if (options.showHoop && hoopRect(design)) {
        world = united(world, *hoopRect(design));
    }
    world = widened(world, std::max(world.width, world.height) * 0.03);
    const QRectF inner = picture.adjusted(2, 2, -2, -2);
    const double millimetresPerUnit =
        std::min(inner.width() / world.width, inner.height() / world.height);
    painter.save();
    painter.setClipRect(page.rect(picture.x(), picture.y(), picture.width(), picture.height()));
    paintScene(page, design, fitTransform(page, world, inner, millimetresPerUnit), world, options,
               false);
    painter.restore();
    page.write({picture.x() + 1, picture.bottom() - 5, picture.width() - 2, 4.5},
               Qt::AlignRight | Qt::AlignVCenter,
               QObject::tr("shown at %1 %")
                   .arg(QLocale().toString(millimetresPerUnit * kUnitsPerMillimetre * 100, 'f', 0)),
               7, false, Qt::darkGray);
    const double factsLeft = picture.right() + 6;
    paintFacts(page, design, options,
               QRectF(factsLeft, kTitleHeight, size.width() - factsLeft, layout.pictureHeight));

    const double tableTop = kTitleHeight + layout.pictureHeight + kTableGap;
    paintThreadTable(page, rows, 0, static_cast<std::size_t>(layout.rowsOnFirstPage), tableTop,
                     size.width());
    paintFooter(page, size, 1, layout.pages);
    std::size_t next = static_cast<std::size_t>(layout.rowsOnFirstPage);
    for (int number = 2; number <= layout.pages; ++number) {
        if (!device.newPage()) {
            return false;
        }
        page.write({0, 0, size.width(), kTitleHeight - 2}, Qt::AlignLeft | Qt::AlignVCenter,
                   QObject::tr("%1 \u2014 threads (continued)").arg(title), 12, true);
        paintThreadTable(page, rows, next, static_cast<std::size_t>(layout.rowsPerPage),
                         kTitleHeight, size.width());
        paintFooter(page, size, number, layout.pages);
        next += static_cast<std::size_t>(layout.rowsPerPage);
    }
    return true;
}

// --- Template --------------------------------------------------------------------------------

struct TemplateLayout {
    // What is printed, in design units.
    HMKRect content;
    // The printable area below the header, in millimetres.
    QSizeF area;
    int columns = 1;
    int rows = 1;
    // The design point (units) at the top-left of the first page's area.
    HMKPoint origin;
    // Millimetres from one page's area to the next one's.
    double stepX = 0;
    double stepY = 0;
};

int tilesFor(double contentMillimetres, double areaMillimetres) {
    if (contentMillimetres <= areaMillimetres) {
        return 1;
    }
    const double step = std::max(areaMillimetres - kTemplateOverlapMillimetres, 1.0);
    return static_cast<int>(std::ceil((contentMillimetres - kTemplateOverlapMillimetres) / step));
}

TemplateLayout templateLayout(const HMKDesign& design, QSizeF page) {
    TemplateLayout layout;
    HMKRect content = designRect(design);
    if (hoopRect(design)) {
        content = united(content, *hoopRect(design));
    }
    layout.content = widened(content, kTemplateRoom * kUnitsPerMillimetre);
    layout.area = QSizeF(std::max(page.width(), 1.0),
                         std::max(page.height() - kTemplateHeader - kFooter, 1.0));
    const double width = layout.content.width / kUnitsPerMillimetre;
    const double height = layout.content.height / kUnitsPerMillimetre;
    layout.columns = tilesFor(width, layout.area.width());
    layout.rows = tilesFor(height, layout.area.height());
    layout.stepX = layout.area.width() - kTemplateOverlapMillimetres;
    layout.stepY = layout.area.height() - kTemplateOverlapMillimetres;
    // The pages together cover this much; the content sits in its middle.
    const double coveredWidth = layout.columns == 1
                                    ? layout.area.width()
                                    : layout.columns * layout.stepX + kTemplateOverlapMillimetres;
    const double coveredHeight = layout.rows == 1
                                     ? layout.area.height()
                                     : layout.rows * layout.stepY + kTemplateOverlapMillimetres;
    const double centreX = layout.content.x + layout.content.width / 2;
    const double centreY = layout.content.y + layout.content.height / 2;
    layout.origin = {centreX - coveredWidth / 2 * kUnitsPerMillimetre,
                     centreY + coveredHeight / 2 * kUnitsPerMillimetre};
    return layout;
}

void paintAlignmentMark(Page& page, QPointF at) {
    QPainter& painter = page.painter();
    painter.setPen(page.pen(Qt::black, 0.25));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(page.point(at.x(), at.y()), page.dots(4), page.dots(4));
    painter.drawLine(page.point(at.x() - 6, at.y()), page.point(at.x() + 6, at.y()));
    painter.drawLine(page.point(at.x(), at.y() - 6), page.point(at.x(), at.y() + 6));
}

void paintScaleBar(Page& page, const HMKPrintOptions& options, double right, double y) {
    const double barLength =
        options.unit == HMKMeasurementUnit::millimetres ? 50 : 2 * kMillimetresPerInch;
    QPainter& painter = page.painter();
    painter.setPen(page.pen(Qt::black, 0.3));
    const double left = right - barLength;
    painter.drawLine(page.point(left, y), page.point(right, y));
    painter.drawLine(page.point(left, y - 2), page.point(left, y + 2));
    painter.drawLine(page.point(right, y - 2), page.point(right, y + 2));
    page.write({left - 60, y - 7, barLength + 60, 5}, Qt::AlignRight | Qt::AlignVCenter,
               QObject::tr("this line measures %1 when printed at 100 %")
                   .arg(length(barLength, options.unit)),
               7, false, Qt::darkGray);
}

bool paintTemplate(QPainter& painter, QPagedPaintDevice& device, const HMKDesign& design,
                   const HMKPrintOptions& options, double dotsPerMillimetre, QSizeF size) {
    Page page(painter, dotsPerMillimetre);
    const TemplateLayout layout = templateLayout(design, size);
    const int pages = layout.columns * layout.rows;
    const QString title = designTitle(design);
    for (int row = 0; row < layout.rows; ++row) {
        for (int column = 0; column < layout.columns; ++column) {
            const int number = row * layout.columns + column + 1;
            if (number > 1 && !device.newPage()) {
                return false;
            }
            page.write({0, 0, size.width() * 0.6, 6}, Qt::AlignLeft | Qt::AlignVCenter,
                       QObject::tr("%1 \u2014 template at true size (1:1)").arg(title), 11, true);
            page.write({0, 6, size.width() * 0.6, 5}, Qt::AlignLeft | Qt::AlignVCenter,
                       pages == 1 ? QObject::tr("Lay the centre cross on the centre of the hoop.")
                                  : QObject::tr("Row %1, column %2 of %3 \u00D7 %4: overlap the "
                                                "round marks of neighbouring pages.")
                                        .arg(row + 1)
                                        .arg(column + 1)
                                        .arg(layout.rows)
                                        .arg(layout.columns),
                       8, false, Qt::darkGray);
            paintScaleBar(page, options, size.width(), 10);
            // This page's area shows the design from this corner on, at 1:1.
            const QRectF area(0, kTemplateHeader, layout.area.width(), layout.area.height());
            const double left = layout.origin.x + column * layout.stepX * kUnitsPerMillimetre;
            const double top = layout.origin.y - row * layout.stepY * kUnitsPerMillimetre;
            const HMKRect visible{left, top - area.height() * kUnitsPerMillimetre,
                                  area.width() * kUnitsPerMillimetre,
                                  area.height() * kUnitsPerMillimetre};
            painter.save();
            const QRectF clip = page.rect(area.x(), area.y(), area.width(), area.height());
            painter.setClipRect(clip);
            paintScene(page, design, fitTransform(page, visible, area, 1 / kUnitsPerMillimetre),
                       visible, options, true);
            // Alignment marks in the middle of every overlap, in page millimetres.
            const auto toPage = [&](double xMillimetres, double yMillimetres) {
                return QPointF(xMillimetres - column * layout.stepX,
                               kTemplateHeader + yMillimetres - row * layout.stepY);
            };
            // Two marks on every seam, a quarter of the page in from its ends.
            for (int r = 0; r < layout.rows; ++r) {
                for (int c = 0; c < layout.columns; ++c) {
                    const double seamX = (c + 1) * layout.stepX + kTemplateOverlapMillimetres / 2;
                    const double seamY = (r + 1) * layout.stepY + kTemplateOverlapMillimetres / 2;
                    for (double share : {0.25, 0.75}) {
                        if (c + 1 < layout.columns) {
                            paintAlignmentMark(
                                page,
                                toPage(seamX, r * layout.stepY + layout.area.height() * share));
                        }
                        if (r + 1 < layout.rows) {
                            paintAlignmentMark(
                                page,
                                toPage(c * layout.stepX + layout.area.width() * share, seamY));
                        }
                    }
                }
            }
            painter.restore();
            paintFooter(page, size, number, pages);
        }
    }
    return true;
}

QSizeF printableMillimetres(const QPagedPaintDevice& device) {
    const double dotsPerMillimetre = device.logicalDpiX() / kMillimetresPerInch;
    return QSizeF(
        device.width() / dotsPerMillimetre,
        device.height() * device.logicalDpiX() / double(device.logicalDpiY()) / dotsPerMillimetre);
}

}  // namespace

int printoutPageCount(const HMKDesign& design, const HMKPrintOptions& options,
                      QSizeF printableMillimetres) {
    if (options.printTemplate) {
        const TemplateLayout layout = templateLayout(design, printableMillimetres);
        return layout.rows * layout.columns;
    }
    return worksheetLayout(design, printableMillimetres).pages;
}

bool paintPrintout(const HMKDesign& design, QPagedPaintDevice& device,
                   const HMKPrintOptions& options) {
    QPainter painter;
    if (!painter.begin(&device)) {
        return false;
    }
    const double dotsPerMillimetre = device.logicalDpiX() / kMillimetresPerInch;
    const QSizeF size = printableMillimetres(device);
    const bool painted =
        options.printTemplate
            ? paintTemplate(painter, device, design, options, dotsPerMillimetre, size)
            : paintWorksheet(painter, device, design, options, dotsPerMillimetre, size);
    return painter.end() && painted;
}

bool writePrintoutPdf(const HMKDesign& design, const std::filesystem::path& path,
                      const HMKPrintOptions& options, const QPageSize& pageSize, HMKError* error) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    bool painted = buffer.open(QIODevice::WriteOnly);
    if (painted) {
        QPdfWriter writer(&buffer);
        writer.setResolution(kPdfResolution);
        writer.setPageLayout(QPageLayout(pageSize, QPageLayout::Portrait,
                                         QMarginsF(kPdfMargin, kPdfMargin, kPdfMargin, kPdfMargin),
                                         QPageLayout::Millimeter));
        writer.setTitle(designTitle(design));
        writer.setCreator(QStringLiteral("Hemlark"));
        painted = paintPrintout(design, writer, options);
    }
    if (!painted) {
        return fail(error, kPictureEncodingError, "The printout could not be created.");
    }
    return writeFileAtomically(path, std::vector<std::uint8_t>(bytes.begin(), bytes.end()), error);
}
