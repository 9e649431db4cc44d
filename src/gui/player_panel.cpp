#include "gui/player_panel.h"

#include <QAction>
#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <cmath>

namespace {

// The speed slider is logarithmic: its steps span the player's speeds evenly by ratio.
constexpr int kSpeedSteps = 1000;

int speedStep(double speed) {
    const double low = std::log(HMKStitchOutPlayer::kMinimumSpeed);
    const double high = std::log(HMKStitchOutPlayer::kMaximumSpeed);
    return static_cast<int>(std::lround((std::log(speed) - low) / (high - low) * kSpeedSteps));
}

double speedAt(int step) {
    const double low = std::log(HMKStitchOutPlayer::kMinimumSpeed);
    const double high = std::log(HMKStitchOutPlayer::kMaximumSpeed);
    return std::round(std::exp(low + (high - low) * step / kSpeedSteps));
}

QString duration(double seconds) {
    return QString::fromStdString(sewingTimeText(seconds));
}

// The panel's commands: text, shortcut (within the panel), icon and its fallback.
struct TransportRow {
    const char* text;
    const char* shortcut;
    const char* iconName;
    QStyle::StandardPixmap fallback;
    void (HMKStitchOutAnimation::*command)();
};

const TransportRow kTransport[] = {
    {QT_TRANSLATE_NOOP("HMKPlayerPanel", "Previous Colour"), "Ctrl+Left", "media-skip-backward",
     QStyle::SP_MediaSkipBackward, &HMKStitchOutAnimation::previousBlock},
    {QT_TRANSLATE_NOOP("HMKPlayerPanel", "Previous Stitch"), "Left", "media-seek-backward",
     QStyle::SP_MediaSeekBackward, &HMKStitchOutAnimation::stepBackward},
    {QT_TRANSLATE_NOOP("HMKPlayerPanel", "Play"), "Space", "media-playback-start",
     QStyle::SP_MediaPlay, &HMKStitchOutAnimation::togglePlaying},
    {QT_TRANSLATE_NOOP("HMKPlayerPanel", "Next Stitch"), "Right", "media-seek-forward",
     QStyle::SP_MediaSeekForward, &HMKStitchOutAnimation::stepForward},
    {QT_TRANSLATE_NOOP("HMKPlayerPanel", "Next Colour"), "Ctrl+Right", "media-skip-forward",
     QStyle::SP_MediaSkipForward, &HMKStitchOutAnimation::nextBlock},
};

}  // namespace

HMKPlayerPanel::HMKPlayerPanel(HMKStitchOutAnimation& animation, HMKSettings& settings,
                               QWidget* parent)
    : QWidget(parent), animation_(animation), settings_(settings), sound_(this) {
    auto* layout = new QVBoxLayout(this);
    auto* transport = new QHBoxLayout;
    for (const TransportRow& row : kTransport) {
        auto* action =
            new QAction(QIcon::fromTheme(row.iconName, style()->standardIcon(row.fallback)),
                        tr(row.text), this);
        action->setShortcut(QKeySequence(QString::fromLatin1(row.shortcut)));
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        action->setToolTip(tr("%1 (%2)").arg(
            action->text(), action->shortcut().toString(QKeySequence::NativeText)));
        connect(action, &QAction::triggered, &animation_, row.command);
        addAction(action);
        auto* button = new QToolButton(this);
        button->setDefaultAction(action);
        button->setAutoRaise(true);
        transport->addWidget(button);
        if (row.command == &HMKStitchOutAnimation::togglePlaying) {
            playAction_ = action;
        }
    }
    position_ = new QSlider(Qt::Horizontal, this);
    position_->setToolTip(tr("Drag to sew up to any stitch"));
    connect(position_, &QSlider::valueChanged, this,
            [this](int value) { animation_.seek(static_cast<std::uint64_t>(value)); });
    transport->addWidget(position_, 1);
    stitch_ = new QLabel(this);
    stitch_->setMinimumWidth(
        fontMetrics().horizontalAdvance(tr("Stitch 000,000,000 of 000,000,000")));
    transport->addWidget(stitch_);
    layout->addLayout(transport);

    auto* facts = new QHBoxLayout;
    swatch_ = new QLabel(this);
    swatch_->setFixedSize(18, 12);
    facts->addWidget(swatch_);
    thread_ = new QLabel(this);
    facts->addWidget(thread_, 1);
    time_ = new QLabel(this);
    facts->addWidget(time_, 1);
    auto* speedLabel = new QLabel(tr("&Speed:"), this);
    facts->addWidget(speedLabel);
    speedSlider_ = new QSlider(Qt::Horizontal, this);
    speedSlider_->setRange(0, kSpeedSteps);
    speedSlider_->setMinimumWidth(120);
    speedLabel->setBuddy(speedSlider_);
    connect(speedSlider_, &QSlider::valueChanged, this,
            [this](int step) { animation_.setSpeed(speedAt(step)); });
    facts->addWidget(speedSlider_);
    speedBox_ = new QSpinBox(this);
    speedBox_->setRange(static_cast<int>(HMKStitchOutPlayer::kMinimumSpeed),
                        static_cast<int>(HMKStitchOutPlayer::kMaximumSpeed));
    speedBox_->setSuffix(tr(" stitches/s"));
    speedBox_->setKeyboardTracking(false);
    connect(speedBox_, &QSpinBox::valueChanged, this,
            [this](int speed) { animation_.setSpeed(speed); });
    facts->addWidget(speedBox_);
    mute_ = new QToolButton(this);
    mute_->setCheckable(true);
    mute_->setAutoRaise(true);
    connect(mute_, &QToolButton::toggled, this,
            [this](bool muted) { settings_.setValue(HMKSettings::soundMuted, muted); });
    facts->addWidget(mute_);
    layout->addLayout(facts);

    connect(&animation_, &HMKStitchOutAnimation::changed, this, &HMKPlayerPanel::refresh);
    connect(&animation_, &HMKStitchOutAnimation::stitchesSewn, this, &HMKPlayerPanel::stitchesSewn);
    connect(&settings_, &HMKSettings::changed, this, [this](const QString& key) {
        if (key == HMKSettings::soundMuted.name || key == HMKSettings::machineSpeed.name) {
            refresh();
        }
    });
    refresh();
}

QString HMKPlayerPanel::stitchText() const {
    return stitch_->text();
}

QString HMKPlayerPanel::threadText() const {
    return thread_->text();
}

QString HMKPlayerPanel::timeText() const {
    return time_->text();
}

void HMKPlayerPanel::refresh() {
    const HMKStitchOutPlayer& player = animation_.player();
    const QLocale locale;
    {
        const QSignalBlocker blockPosition(position_);
        const QSignalBlocker blockSlider(speedSlider_);
        const QSignalBlocker blockBox(speedBox_);
        const QSignalBlocker blockMute(mute_);
        position_->setRange(
            0, static_cast<int>(std::min<std::uint64_t>(player.recordCount(), INT32_MAX)));
        position_->setValue(static_cast<int>(player.position()));
        position_->setPageStep(std::max(1, position_->maximum() / 20));
        speedSlider_->setValue(speedStep(player.speed()));
        speedBox_->setValue(static_cast<int>(player.speed()));
        mute_->setChecked(settings_.value(HMKSettings::soundMuted));
    }
    // The button shows the sound as it is: a speaker that sounds, or a muted one.
    const bool muted = settings_.value(HMKSettings::soundMuted);
    mute_->setIcon(QIcon::fromTheme(
        muted ? QStringLiteral("audio-volume-muted") : QStringLiteral("audio-volume-high"),
        style()->standardIcon(muted ? QStyle::SP_MediaVolumeMuted : QStyle::SP_MediaVolume)));
    mute_->setToolTip(muted ? tr("Turn the needle sound on") : tr("Mute the needle sound"));
    playAction_->setText(player.isPlaying() ? tr("Pause") : tr("Play"));
    playAction_->setIcon(QIcon::fromTheme(
        player.isPlaying() ? QStringLiteral("media-playback-pause")
                           : QStringLiteral("media-playback-start"),
        style()->standardIcon(player.isPlaying() ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay)));
    stitch_->setText(tr("Stitch %1 of %2")
                         .arg(locale.toString(static_cast<qulonglong>(player.stitchNumber())),
                              locale.toString(static_cast<qulonglong>(player.stitchCount()))));
    const std::shared_ptr<const HMKDesign>& design = player.design();
    if (design && !design->threads().empty()) {
        const std::int32_t index = player.currentThread();
        const HMKThread& thread = design->threads()[static_cast<std::size_t>(index)];
        QPixmap swatch(swatch_->size());
        swatch.fill(QColor::fromRgbF(float(std::clamp(thread.color.red(), 0.0, 1.0)),
                                     float(std::clamp(thread.color.green(), 0.0, 1.0)),
                                     float(std::clamp(thread.color.blue(), 0.0, 1.0))));
        // Framed, so that a thread of the panel's own colour still shows.
        QPainter frame(&swatch);
        frame.setPen(palette().color(QPalette::WindowText));
        frame.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
        frame.end();
        swatch_->setPixmap(swatch);
        thread_->setText(tr("Thread %1 of %2: %3")
                             .arg(index + 1)
                             .arg(design->threads().size())
                             .arg(QString::fromStdString(thread.name)));
    } else {
        swatch_->clear();
        thread_->setText(tr("No design"));
    }
    const HMKSewingTimeSettings timing = settings_.sewingTimeSettings();
    time_->setText(tr("Elapsed %1, remaining %2")
                       .arg(duration(player.elapsedSeconds(timing)),
                            duration(player.remainingSeconds(timing))));
    time_->setToolTip(tr("Sewing time at %1 stitches per minute (Preferences \u25B8 Player)")
                          .arg(timing.stitchesPerMinute));
}

void HMKPlayerPanel::stitchesSewn(std::uint64_t) {
    if (!settings_.value(HMKSettings::soundMuted) && animation_.player().speed() <= kLoudestSpeed) {
        sound_.click();
    }
}
