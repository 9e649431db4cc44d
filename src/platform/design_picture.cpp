#include "platform/design_picture.h"

#include <QBuffer>
#include <QByteArray>
#include <QFont>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <QTransform>
#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>

#include "formats/file_io.h"
#include "platform/painter_context.h"

namespace {

// Stitches reach half their outline width (3.5 units) beyond their end points.
constexpr double kHalfStitchWidth = 1.75;

bool validSize(const HMKPictureOptions& options) {
    return options.widthPixels > 0 && options.heightPixels > 0 &&
           options.widthPixels <= kMaximumPictureSide &&
           options.heightPixels <= kMaximumPictureSide;
}

QTransform toQTransform(const HMKAffineTransform& t) {
    return QTransform(t.a, t.b, t.c, t.d, t.tx, t.ty);
}

// Paints the background and the design onto a device of the options' pixel size.
void paintDesign(QPainter& painter, const HMKDesign& design, const HMKPictureOptions& options) {
    painter.setRenderHint(QPainter::Antialiasing);
    if (options.background) {
        const HMKColor& color = *options.background;
        painter.fillRect(QRectF(0, 0, options.widthPixels, options.heightPixels),
                         QColor::fromRgbF(static_cast<float>(std::clamp(color.red(), 0.0, 1.0)),
                                          static_cast<float>(std::clamp(color.green(), 0.0, 1.0)),
                                          static_cast<float>(std::clamp(color.blue(), 0.0, 1.0))));
    }
    const HMKAffineTransform transform = designPictureTransform(design, options);
    painter.setTransform(toQTransform(transform));
    // The whole picture in design units, so that culling keeps everything visible.
    const double scale = transform.a;
    const HMKRect visible{-transform.tx / scale, (transform.ty - options.heightPixels) / scale,
                          options.widthPixels / scale, options.heightPixels / scale};
    HMKPainterContext context(painter);
    design.drawDesignInRect(visible, context, options.show3D, options.showJumps,
                            options.showStructure, options.thread);
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
                                                 const HMKPictureOptions& options,
                                                 HMKError* error) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly)) {
        return encodingFailed(error);
    }
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(QSize(options.widthPixels, options.heightPixels));
    generator.setViewBox(QRect(0, 0, options.widthPixels, options.heightPixels));
    // CSS pixels, so that the document is as many pixels wide as asked for.
    generator.setResolution(96);
    generator.setTitle(QString::fromStdString(design.designName()));
    QPainter painter;
    if (!painter.begin(&generator)) {
        return encodingFailed(error);
    }
    // The generator writes the painter's font into every group; without an application
    // object that font has no size, and "-1" is not valid SVG.
    painter.setFont(QFont(QStringLiteral("sans-serif"), 12));
    paintDesign(painter, design, options);
    if (!painter.end()) {
        return encodingFailed(error);
    }
    return toBytes(bytes);
}

std::optional<std::vector<std::uint8_t>> pdfData(const HMKDesign& design,
                                                 const HMKPictureOptions& options,
                                                 HMKError* error) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly)) {
        return encodingFailed(error);
    }
    QPdfWriter writer(&buffer);
    // One page exactly the picture's size, one point per pixel.
    writer.setResolution(72);
    writer.setPageLayout(QPageLayout(QPageSize(QSizeF(options.widthPixels, options.heightPixels),
                                               QPageSize::Point, QString(), QPageSize::ExactMatch),
                                     QPageLayout::Portrait, QMarginsF(0, 0, 0, 0),
                                     QPageLayout::Point));
    writer.setTitle(QString::fromStdString(design.designName()));
    writer.setCreator(QStringLiteral("Hemlark"));
    QPainter painter;
    if (!painter.begin(&writer)) {
        return encodingFailed(error);
    }
    paintDesign(painter, design, options);
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
    QImage image(options.widthPixels, options.heightPixels, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return image;
    }
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintDesign(painter, design, options);
    return image;
}

std::optional<std::vector<std::uint8_t>> designPictureData(const HMKDesign& design,
                                                           HMKPictureFormat format,
                                                           const HMKPictureOptions& options,
                                                           HMKError* error) {
    if (!validSize(options)) {
        fail(error, kPictureSizeError,
             "The picture must be between 1 and 32767 pixels wide and high.");
        return std::nullopt;
    }
    switch (format) {
        case HMKPictureFormat::png:
            return pngData(design, options, error);
        case HMKPictureFormat::svg:
            return svgData(design, options, error);
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
