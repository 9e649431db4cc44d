#include "platform/design_picture.h"

#include <QBuffer>
#include <QByteArray>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QTransform>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

#include "formats/file_io.h"
#include "platform/design_image.h"
#include "render/design_svg.h"
#include "render/stitch_runs.h"

namespace {

// Stitches reach half their outline width (3.5 units) beyond their end points.
constexpr double kHalfStitchWidth = 1.75;

bool validSize(const HMKPictureOptions& options) {
    return options.widthPixels > 0 && options.heightPixels > 0 &&
           options.widthPixels <= kMaximumPictureSide &&
           options.heightPixels <= kMaximumPictureSide;
}

HMKDrawingSwitches switchesOf(const HMKPictureOptions& options) {
    return {options.show3D, options.showJumps, options.showStructure, options.thread};
}

bool validScale(const HMKPictureOptions& options) {
    return options.vectorScale >= kMinimumVectorScale && options.vectorScale <= kMaximumVectorScale;
}

QColor toQColor(const HMKRgba& color) {
    auto unit = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(unit(color.red), unit(color.green), unit(color.blue),
                            unit(color.alpha));
}

// Strokes every run of the design as one path, and its structure marks, on a painter whose
// transform maps design units to the page.
void paintRuns(QPainter& painter, const HMKDesign& design, const HMKPictureOptions& options) {
    const double pointsPerUnit =
        std::sqrt(std::abs(painter.transform().m11() * painter.transform().m22()));
    QPainterPath path;
    walkStitchRuns(design, switchesOf(options), [&](const HMKStitchRun& run) {
        path.clear();
        path.moveTo(run.points.front().x, run.points.front().y);
        for (std::size_t i = 1; i < run.points.size(); ++i) {
            path.lineTo(run.points[i].x, run.points[i].y);
        }
        for (const HMKRunStroke& stroke : run.strokes) {
            QPen pen(QBrush(toQColor(stroke.color)), stroke.width, Qt::SolidLine, Qt::RoundCap,
                     Qt::RoundJoin);
            if (stroke.dashed) {
                // Qt counts dashes in pen widths, or in device units for the thinnest line.
                const double unit = stroke.width > 0 ? 1 / stroke.width : pointsPerUnit;
                pen.setDashPattern({2 * unit, 3 * unit});
            }
            painter.strokePath(path, pen);
        }
        for (std::size_t i = 1; i < run.points.size() && run.markerSize > 0; ++i) {
            painter.fillRect(
                QRectF(run.points[i].x - run.markerSize / 2, run.points[i].y - run.markerSize / 2,
                       run.markerSize, run.markerSize),
                toQColor(run.markerColor));
        }
    });
}

std::vector<std::uint8_t> toBytes(const QByteArray& bytes) {
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
}

std::optional<std::vector<std::uint8_t>> encodingFailed(HMKError* error) {
    fail(error, kPictureEncodingError, "The picture could not be created.");
    return std::nullopt;
}

std::optional<std::vector<std::uint8_t>> pngData(const HMKDesign& design,
                                                 const HMKPictureOptions& options,
                                                 HMKError* error) {
    QImage image = renderDesignImage(design, options);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (image.isNull() || !buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG")) {
        return encodingFailed(error);
    }
    return toBytes(bytes);
}

std::optional<std::vector<std::uint8_t>> svgData(const HMKDesign& design,
                                                 const HMKPictureOptions& options) {
    std::optional<HMKRgba> background;
    if (options.background) {
        background = HMKRgba{options.background->red(), options.background->green(),
                             options.background->blue(), 1};
    }
    const std::string text =
        designSvg(design, switchesOf(options), options.vectorScale, background);
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

std::optional<std::vector<std::uint8_t>> pdfData(const HMKDesign& design,
                                                 const HMKPictureOptions& options,
                                                 HMKError* error) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly)) {
        return encodingFailed(error);
    }
    // One page of the design's real size (times the scale) and its margin, in points.
    constexpr double kPointsPerUnit = 72.0 / 254.0;
    const HMKVectorPage page = vectorPageOfDesign(design);
    const double scale = kPointsPerUnit * options.vectorScale;
    QPdfWriter writer(&buffer);
    writer.setResolution(72);
    writer.setPageLayout(QPageLayout(QPageSize(QSizeF(page.width * scale, page.height * scale),
                                               QPageSize::Point, QString(), QPageSize::ExactMatch),
                                     QPageLayout::Portrait, QMarginsF(0, 0, 0, 0),
                                     QPageLayout::Point));
    writer.setTitle(QString::fromStdString(design.designName()));
    writer.setCreator(QStringLiteral("Hemlark"));
    QPainter painter;
    if (!painter.begin(&writer)) {
        return encodingFailed(error);
    }
    painter.setRenderHint(QPainter::Antialiasing);
    if (options.background) {
        const HMKColor& color = *options.background;
        painter.fillRect(QRectF(0, 0, page.width * scale, page.height * scale),
                         toQColor({color.red(), color.green(), color.blue(), 1}));
    }
    // y grows upward in the design and downward on the page.
    painter.setTransform(
        QTransform(scale, 0, 0, -scale, -page.left * scale, (page.bottom + page.height) * scale));
    paintRuns(painter, design, options);
    if (!painter.end()) {
        return encodingFailed(error);
    }
    return toBytes(bytes);
}

}  // namespace

std::optional<HMKPictureFormat> pictureFormatForPath(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == ".png") {
        return HMKPictureFormat::png;
    }
    if (extension == ".svg") {
        return HMKPictureFormat::svg;
    }
    if (extension == ".pdf") {
        return HMKPictureFormat::pdf;
    }
    return std::nullopt;
}

HMKAffineTransform designPictureTransform(const HMKDesign& design,
                                          const HMKPictureOptions& options) {
    const double width = options.widthPixels;
    const double height = options.heightPixels;
    double centerX = 0;
    double centerY = 0;
    double scale = 1;
    // An empty design keeps the inverted bounds; it draws nothing, around the origin.
    if (design.xMin() <= design.xMax() && design.yMin() <= design.yMax()) {
        const double designWidth = double(design.xMax()) - design.xMin() + 2 * kHalfStitchWidth;
        const double designHeight = double(design.yMax()) - design.yMin() + 2 * kHalfStitchWidth;
        const double availableWidth = std::max(width - 2.0 * options.marginPixels, 1.0);
        const double availableHeight = std::max(height - 2.0 * options.marginPixels, 1.0);
        scale = std::min(availableWidth / designWidth, availableHeight / designHeight);
        centerX = (double(design.xMin()) + design.xMax()) / 2;
        centerY = (double(design.yMin()) + design.yMax()) / 2;
    }
    HMKAffineTransform transform;
    transform.a = scale;
    transform.d = -scale;
    transform.tx = width / 2 - scale * centerX;
    transform.ty = height / 2 + scale * centerY;
    return transform;
}

void fitPictureToDesign(const HMKDesign& design, int longerSidePixels, HMKPictureOptions& options) {
    const double width = std::max(design.xMax() - design.xMin(), 1.0f);
    const double height = std::max(design.yMax() - design.yMin(), 1.0f);
    const int inner = std::max(longerSidePixels - 2 * options.marginPixels, 1);
    const int shorter =
        static_cast<int>(std::lround(inner * std::min(width, height) / std::max(width, height))) +
        2 * options.marginPixels;
    options.widthPixels = width >= height ? longerSidePixels : shorter;
    options.heightPixels = width >= height ? shorter : longerSidePixels;
}

QImage renderDesignImage(const HMKDesign& design, const HMKPictureOptions& options) {
    if (!validSize(options)) {
        return QImage();
    }
    HMKDesignImageRequest request;
    request.widthPixels = options.widthPixels;
    request.heightPixels = options.heightPixels;
    request.designToPixels = designPictureTransform(design, options);
    request.background = options.background;
    request.switches = switchesOf(options);
    request.threads = 0;
    return drawDesignImage(design, request);
}

std::optional<std::vector<std::uint8_t>> designPictureData(const HMKDesign& design,
                                                           HMKPictureFormat format,
                                                           const HMKPictureOptions& options,
                                                           HMKError* error) {
    if (format == HMKPictureFormat::png && !validSize(options)) {
        fail(error, kPictureSizeError,
             "The picture must be between 1 and 32767 pixels wide and high.");
        return std::nullopt;
    }
    if (format != HMKPictureFormat::png && !validScale(options)) {
        fail(error, kPictureSizeError, "The scale must be between 0.01 and 100.");
        return std::nullopt;
    }
    switch (format) {
        case HMKPictureFormat::png:
            return pngData(design, options, error);
        case HMKPictureFormat::svg:
            return svgData(design, options);
        case HMKPictureFormat::pdf:
            return pdfData(design, options, error);
    }
    return encodingFailed(error);
}

bool writeDesignPicture(const HMKDesign& design, const std::filesystem::path& path,
                        const HMKPictureOptions& options, HMKError* error) {
    std::optional<HMKPictureFormat> format = pictureFormatForPath(path);
    if (!format) {
        return fail(error, kPictureFormatError,
                    "Pictures can be written as PNG, SVG or PDF files (.png, .svg, .pdf).");
    }
    std::optional<std::vector<std::uint8_t>> bytes =
        designPictureData(design, *format, options, error);
    if (!bytes) {
        return false;
    }
    return writeFileAtomically(path, *bytes, error);
}
