#include "gui/information_panel.h"

#include <QApplication>
#include <QDrag>
#include <QFormLayout>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QThreadPool>
#include <QUrl>
#include <QVBoxLayout>

#include "formats/file_io.h"
#include "formats/format_extensions.h"
#include "platform/design_picture.h"

namespace {

constexpr int kPictureSide = 120;

// The panel's rows, in order.
const char* const kRowNames[] = {
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Format"),
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Size"),
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Stitches"),
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Jumps"),
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Colours"),
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Palette"),
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Hoop"),
    QT_TRANSLATE_NOOP("HMKInformationPanel", "Sewing time"),
};

QString lengthText(double millimetres, HMKMeasurementUnit unit) {
    return QString::fromStdString(HMKValueTransformer::transformedValue(millimetres, unit));
}

}  // namespace

HMKInformationPanel::HMKInformationPanel(HMKDocument& document, HMKSettings& settings,
                                         QWidget* parent)
    : QWidget(parent), document_(document), settings_(settings) {
    auto* layout = new QVBoxLayout(this);
    picture_ = new QLabel(this);
    picture_->setFixedSize(kPictureSide, kPictureSide);
    picture_->setAlignment(Qt::AlignCenter);
    picture_->setToolTip(
        tr("Drag the picture to a folder or another program to copy the design "
           "file there."));
    picture_->setCursor(Qt::OpenHandCursor);
    picture_->installEventFilter(this);
    layout->addWidget(picture_, 0, Qt::AlignHCenter);
    auto* form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    for (const char* name : kRowNames) {
        auto* label = new QLabel(tr(name), this);
        auto* value = new QLabel(this);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        form->addRow(label, value);
        rows_.emplace_back(label, value);
    }
    layout->addLayout(form);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    connect(&document_, &HMKDocument::designChanged, this, &HMKInformationPanel::refresh);
    connect(&document_, &HMKDocument::shownThreadChanged, this,
            &HMKInformationPanel::requestPicture);
    connect(&settings_, &HMKSettings::changed, this, [this](const QString& key) {
        if (key == HMKSettings::measurementUnit.name || key == HMKSettings::machineSpeed.name) {
            refresh();
        }
    });
    refresh();
}

QString HMKInformationPanel::valueOf(const QString& row) const {
    for (const auto& [label, value] : rows_) {
        if (label->text() == row) {
            return value->text();
        }
    }
    return {};
}

void HMKInformationPanel::refresh() {
    const HMKDesign& design = document_.design();
    const bool empty = design.stitches().empty() || design.threads().empty();
    const HMKMeasurementUnit unit = settings_.value(HMKSettings::measurementUnit);
    QStringList values;
    if (empty) {
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            values.append(QStringLiteral("\u2014"));
        }
    } else {
        const std::int32_t version = design.designVersion();
        values.append(version > 0 ? tr("%1 %2")
                                        .arg(QString::fromStdString(design.designType()))
                                        .arg(version / 10.0, 0, 'f', 1)
                                  : QString::fromStdString(design.designType()));
        values.append(tr("%1 \u00D7 %2")
                          .arg(lengthText(design.designWidth() / 10.0, unit),
                               lengthText(design.designHeight() / 10.0, unit)));
        values.append(QLocale().toString(design.numberOfStitches()));
        values.append(QLocale().toString(design.numberOfJumps()));
        values.append(tr("%1 (%2 threads)")
                          .arg(design.numberOfDifferentColors())
                          .arg(design.numberOfThreads()));
        values.append(QString::fromStdString(design.designPaletteName()));
        values.append(design.designHoop()
                          ? QString::fromStdString(design.designHoop()->description())
                          : tr("None"));
        const HMKSewingTimeSettings timing = settings_.sewingTimeSettings();
        values.append(tr("%1 at %2 stitches/min")
                          .arg(QString::fromStdString(
                                   sewingTimeText(sewingSecondsOf(design.stitches(), timing))),
                               QLocale().toString(timing.stitchesPerMinute)));
    }
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        rows_[i].second->setText(values[static_cast<int>(i)]);
    }
    requestPicture();
}

void HMKInformationPanel::requestPicture() {
    const HMKDesign& design = document_.design();
    const std::uint64_t generation = ++pictureGeneration_;
    if (design.stitches().empty() || design.threads().empty()) {
        picture_->clear();
        return;
    }
    // Drawn off the GUI thread: a design may have a million stitches.
    auto copy = std::make_shared<const HMKDesign>(design);
    const qreal ratio = devicePixelRatioF();
    QPointer<HMKInformationPanel> panel(this);
    QThreadPool::globalInstance()->start([panel, copy, generation, ratio] {
        HMKPictureOptions options;
        options.widthPixels = options.heightPixels = static_cast<int>(kPictureSide * ratio);
        options.marginPixels = 4;
        options.show3D = true;
        QImage image = renderDesignImage(*copy, options);
        image.setDevicePixelRatio(ratio);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [panel, image, generation] {
                if (panel && panel->pictureGeneration_ == generation) {
                    panel->picture_->setPixmap(QPixmap::fromImage(image));
                }
            },
            Qt::QueuedConnection);
    });
}

std::filesystem::path HMKInformationPanel::fileForDrag() {
    const HMKDesign& design = document_.design();
    if (!document_.fileURL().empty() && !document_.isModified()) {
        return document_.fileURL();
    }
    if (design.stitches().empty()) {
        return {};
    }
    // The design's own format when it can be written, else PES.
    std::string extension = lowercaseExtension(design.designLocation());
    const auto writable = exportableExtensions();
    if (std::find(writable.begin(), writable.end(), extension) == writable.end()) {
        extension = "pes";
    }
    std::string stem = std::filesystem::path(design.designName()).stem().string();
    if (stem.empty()) {
        stem = tr("Untitled").toStdString();
    }
    dragFolder_ = std::make_unique<QTemporaryDir>();
    if (!dragFolder_->isValid()) {
        return {};
    }
    const std::filesystem::path file =
        std::filesystem::path(dragFolder_->path().toStdString()) / (stem + "." + extension);
    return document_.exportCopyToURL(file) ? file : std::filesystem::path();
}

bool HMKInformationPanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == picture_) {
        if (event->type() == QEvent::MouseButtonPress) {
            pressPosition_ = static_cast<QMouseEvent*>(event)->position().toPoint();
        } else if (event->type() == QEvent::MouseMove) {
            auto* move = static_cast<QMouseEvent*>(event);
            if ((move->buttons() & Qt::LeftButton) &&
                (move->position().toPoint() - pressPosition_).manhattanLength() >=
                    QApplication::startDragDistance()) {
                startDrag();
                return true;
            }
        }
    }
    return QWidget::eventFilter(watched, event);
}

void HMKInformationPanel::startDrag() {
    const std::filesystem::path file = fileForDrag();
    if (file.empty()) {
        return;
    }
    auto* drag = new QDrag(this);
    auto* data = new QMimeData;
    data->setUrls({QUrl::fromLocalFile(QString::fromStdString(file.string()))});
    drag->setMimeData(data);
    if (!picture_->pixmap().isNull()) {
        drag->setPixmap(picture_->pixmap().scaled(64, 64, Qt::KeepAspectRatio));
    }
    drag->exec(Qt::CopyAction);
}
