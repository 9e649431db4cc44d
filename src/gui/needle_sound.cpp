#include "gui/needle_sound.h"

#include <QAudioDevice>
#include <QAudioSink>
#include <QMediaDevices>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

namespace {

constexpr double kClickSeconds = 0.012;
constexpr double kToneHertz = 2300;
// The click fades to a thousandth of its start within its length.
constexpr double kDecaySeconds = 0.0018;
constexpr double kLoudness = 0.35;
constexpr int kPreferredRate = 44100;

// The audio layer reports a missing sound server as a warning; a machine without one simply
// plays no clicks, so those lines are dropped while the output is looked for.
QtMessageHandler forwardedHandler = nullptr;

void dropAudioServerWarnings(QtMsgType type, const QMessageLogContext& context,
                             const QString& message) {
    if (type == QtWarningMsg && message.startsWith(QLatin1String("PulseAudioService"))) {
        return;
    }
    if (forwardedHandler) {
        forwardedHandler(type, context, message);
    }
}

}  // namespace

HMKNeedleSound::HMKNeedleSound(QObject* parent) : QObject(parent) {}

HMKNeedleSound::~HMKNeedleSound() {
    if (sink_) {
        sink_->stop();
    }
}

QByteArray HMKNeedleSound::clickSamples(int sampleRate) {
    const int count = static_cast<int>(kClickSeconds * sampleRate);
    QByteArray samples(count * static_cast<int>(sizeof(std::int16_t)), '\0');
    auto* out = reinterpret_cast<std::int16_t*>(samples.data());
    // A fixed seed: every click sounds the same.
    std::minstd_rand noise(7);
    std::uniform_real_distribution<double> spread(-1, 1);
    for (int i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / sampleRate;
        const double tone = std::sin(2 * std::numbers::pi * kToneHertz * t);
        const double value = (0.8 * tone + 0.2 * spread(noise)) * std::exp(-t / kDecaySeconds);
        out[i] = static_cast<std::int16_t>(std::lround(value * kLoudness * 32767));
    }
    return samples;
}

void HMKNeedleSound::open() {
    opened_ = true;
    forwardedHandler = qInstallMessageHandler(dropAudioServerWarnings);
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    qInstallMessageHandler(forwardedHandler);
    if (device.isNull()) {
        return;
    }
    QAudioFormat format;
    format.setSampleFormat(QAudioFormat::Int16);
    format.setChannelCount(1);
    format.setSampleRate(kPreferredRate);
    if (!device.isFormatSupported(format)) {
        format.setSampleRate(device.preferredFormat().sampleRate());
        if (!device.isFormatSupported(format)) {
            return;
        }
    }
    click_ = clickSamples(format.sampleRate());
    sink_ = std::make_unique<QAudioSink>(device, format);
    output_ = sink_->start();
    if (!output_ || sink_->error() != QAudio::NoError) {
        sink_.reset();
        output_ = nullptr;
    }
}

void HMKNeedleSound::click() {
    if (!opened_) {
        open();
    }
    if (output_) {
        // Push mode: the sink plays what it is given and idles in between.
        output_->write(click_);
    }
}
