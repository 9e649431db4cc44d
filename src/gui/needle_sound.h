// HMKNeedleSound: the stitch-out player's needle click, a few milliseconds of sound made here
// (a decaying tone with a little noise) and played through the default audio output. A
// machine without an audio output, or whose output fails, stays silent without a message.
#pragma once

#include <memory>

#include <QAudioFormat>
#include <QByteArray>
#include <QObject>

class QAudioSink;
class QIODevice;

class HMKNeedleSound : public QObject {
    Q_OBJECT
public:
    explicit HMKNeedleSound(QObject* parent = nullptr);
    ~HMKNeedleSound() override;

    // Plays one click (the output is opened at the first one).
    void click();
    // Whether clicks reach an audio output (false until the first click tried).
    bool isAvailable() const { return output_ != nullptr; }

    // One click as 16-bit mono samples at the format's rate.
    static QByteArray clickSamples(int sampleRate);

private:
    void open();

    bool opened_ = false;
    std::unique_ptr<QAudioSink> sink_;
    QIODevice* output_ = nullptr;
    QByteArray click_;
};
