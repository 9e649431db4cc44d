#include "document/pasteboard.h"

#include <algorithm>
#include <cmath>
#include <mutex>

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>

#include "model/archive.h"
#include "platform/design_picture.h"

namespace {

// Keeps the design itself and turns it into a form when one is asked for. Pasting inside the
// application takes the design directly and skips the archive altogether.
class DesignMimeData final : public QMimeData {
public:
    explicit DesignMimeData(HMKDesign design) : design_(std::move(design)) {}

    const HMKDesign& design() const { return design_; }

    QStringList formats() const override {
        return {kHMKDesignMimeType, kHMKPngMimeType, kHMKTextMimeType};
    }

protected:
    QVariant retrieveData(const QString& mimeType, QMetaType type) const override {
        std::lock_guard lock(mutex_);
        if (mimeType == kHMKDesignMimeType) {
            if (archive_.isEmpty()) {
                const std::vector<std::uint8_t> bytes = archiveDesign(design_);
                archive_ = QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                      static_cast<qsizetype>(bytes.size()));
            }
            return archive_;
        }
        if (mimeType == kHMKPngMimeType) {
            if (picture_.isEmpty()) {
                picture_ = pictureData();
            }
            return picture_;
        }
        if (mimeType == kHMKTextMimeType) {
            const QString text = QString::fromStdString(design_.description());
            return type.id() == QMetaType::QString ? QVariant(text) : QVariant(text.toUtf8());
        }
        return {};
    }

private:
    // The design fitted into a transparent picture whose longer side is kPastedPictureSide.
    QByteArray pictureData() const {
        const double width = std::max(1, design_.designWidth());
        const double height = std::max(1, design_.designHeight());
        const double scale = kPastedPictureSide / std::max(width, height);
        HMKPictureOptions options;
        options.widthPixels = std::max(1, static_cast<int>(std::lround(width * scale)));
        options.heightPixels = std::max(1, static_cast<int>(std::lround(height * scale)));
        options.show3D = true;
        const QImage image = renderDesignImage(design_, options);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return bytes;
    }

    HMKDesign design_;
    // Requests may come from the clipboard's own thread on some platforms.
    mutable std::mutex mutex_;
    mutable QByteArray archive_;
    mutable QByteArray picture_;
};

}  // namespace

QMimeData* makeDesignMimeData(HMKDesign design) {
    return new DesignMimeData(std::move(design));
}

std::optional<HMKDesign> designFromMimeData(const QMimeData* data, HMKError* error) {
    if (auto* own = dynamic_cast<const DesignMimeData*>(data)) {
        return own->design();
    }
    if (!data || !data->hasFormat(kHMKDesignMimeType)) {
        return std::nullopt;
    }
    const QByteArray bytes = data->data(kHMKDesignMimeType);
    return unarchiveDesign({reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                            static_cast<std::size_t>(bytes.size())},
                           error);
}

void writeDesignToClipboard(HMKDesign design) {
    QGuiApplication::clipboard()->setMimeData(makeDesignMimeData(std::move(design)));
}

bool clipboardHasDesign() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasFormat(kHMKDesignMimeType);
}

std::optional<HMKDesign> readDesignFromClipboard(HMKError* error) {
    return designFromMimeData(QGuiApplication::clipboard()->mimeData(), error);
}
