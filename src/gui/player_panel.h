// HMKPlayerPanel: the stitch-out player under the design canvas. It plays, pauses and steps
// the canvas's stitch-out animation by stitch and by colour block, seeks with a slider, shows
// the stitch number, the thread being sewn and the elapsed and remaining sewing time, sets
// the speed live ("StitchSpeed") and clicks like a needle at low speeds unless "SoundMuted".
#pragma once

#include <QWidget>

#include "gui/needle_sound.h"
#include "gui/stitch_out_animation.h"
#include "platform/settings.h"

class QLabel;
class QSlider;
class QSpinBox;
class QToolButton;

class HMKPlayerPanel : public QWidget {
    Q_OBJECT
public:
    HMKPlayerPanel(HMKStitchOutAnimation& animation, HMKSettings& settings,
                   QWidget* parent = nullptr);

    // What the panel shows, for tests: "Stitch 3 of 8", "Thread 2 of 3: Red", the times.
    QString stitchText() const;
    QString threadText() const;
    QString timeText() const;
    QSlider* positionSlider() const { return position_; }
    QSpinBox* speedBox() const { return speedBox_; }

    // Needle clicks are played up to this speed (stitches per second); faster ones would
    // blur into a hum.
    static constexpr double kLoudestSpeed = 30;

private:
    void refresh();
    void stitchesSewn(std::uint64_t records);

    HMKStitchOutAnimation& animation_;
    HMKSettings& settings_;
    HMKNeedleSound sound_;
    QAction* playAction_ = nullptr;
    QSlider* position_ = nullptr;
    QLabel* stitch_ = nullptr;
    QLabel* swatch_ = nullptr;
    QLabel* thread_ = nullptr;
    QLabel* time_ = nullptr;
    QSlider* speedSlider_ = nullptr;
    QSpinBox* speedBox_ = nullptr;
    QToolButton* mute_ = nullptr;
};
