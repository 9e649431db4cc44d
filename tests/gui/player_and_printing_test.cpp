// The stitch-out player, rulers, measuring and printing in a real window, driven with the
// keyboard and mouse: the player panel steps and plays the canvas's animation, the picture
// drawn a few stitches at a time matches one drawn at once, the measuring tool reads distance
// and angle in the user's unit, and "Export as PDF" writes the printout.
#include <QAction>
#include <QDockWidget>
#include <QPdfWriter>
#include <QSlider>
#include <QSpinBox>
#include <QTest>

#include "gui/design_canvas.h"
#include "gui/needle_sound.h"
#include "gui/player_panel.h"
#include "gui/ruler.h"
#include "gui_test_support.h"

namespace {

// Pixels whose colour differs by more than a rounding step between two pictures.
int differingPixels(const QImage& a, const QImage& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QColor p = a.pixelColor(x, y), q = b.pixelColor(x, y);
            count += std::abs(p.red() - q.red()) + std::abs(p.green() - q.green()) +
                         std::abs(p.blue() - q.blue()) + std::abs(p.alpha() - q.alpha()) >
                     8;
        }
    }
    return count;
}

}  // namespace

TEST_F(GuiTest, PlayerPanelStepsAndPlaysTheCanvasAnimation) {
    HMKDocumentWindow* window = openWindow("flower.pes");
    ASSERT_TRUE(window);
    QAction* player = window->action(HMKCommand::stitchOutPlayer);
    ASSERT_TRUE(player->isEnabled());
    player->trigger();
    HMKStitchOutAnimation& animation = window->canvas().stitchOut();
    HMKPlayerPanel& panel = window->playerPanel();
    ASSERT_TRUE(animation.isActive());
    ASSERT_TRUE(panel.isVisible());
    const std::int32_t stitches = window->document().design().numberOfStitches();
    EXPECT_EQ(panel.stitchText(),
              QStringLiteral("Stitch 0 of %1").arg(QLocale().toString(stitches)));

    panel.setFocus();
    QTest::keyClick(&panel, Qt::Key_Right);
    QTest::keyClick(&panel, Qt::Key_Right);
    EXPECT_EQ(animation.player().position(), 2u);
    QTest::keyClick(&panel, Qt::Key_Right, Qt::ControlModifier);
    QTest::keyClick(&panel, Qt::Key_Right);
    EXPECT_TRUE(panel.threadText().startsWith(QStringLiteral("Thread 2 of ")))
        << panel.threadText().toStdString();
    QTest::keyClick(&panel, Qt::Key_Left, Qt::ControlModifier);
    QTest::keyClick(&panel, Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(animation.player().position(), 0u);

    // Speed typed into the panel applies at once and is remembered.
    panel.speedBox()->setValue(1000);
    EXPECT_EQ(settings_->value(HMKSettings::stitchSpeed), 1000);
    QTest::keyClick(&panel, Qt::Key_Space);
    EXPECT_TRUE(animation.player().isPlaying());
    animation.advanceFrame(0.1);
    EXPECT_EQ(animation.player().position(), 100u);
    EXPECT_EQ(panel.positionSlider()->value(), 100);
    EXPECT_TRUE(panel.timeText().startsWith(QStringLiteral("Elapsed ")));
    // A needle that ran far ahead is caught up a part per turn of the event loop.
    HMKDesignCanvas& canvas = window->canvas();
    canvas.waitForImage();
    animation.setSpeed(HMKStitchOutPlayer::kMaximumSpeed);
    animation.advanceFrame(HMKStitchOutPlayer::kLongestFrameSeconds);
    EXPECT_FALSE(canvas.isImageCurrent());
    canvas.waitForImage();
    EXPECT_TRUE(canvas.isImageCurrent());
    QTest::keyClick(&panel, Qt::Key_Space);
    EXPECT_FALSE(animation.player().isPlaying());

    // The slider seeks; closing the panel shows the whole design again.
    panel.positionSlider()->setValue(500);
    EXPECT_EQ(animation.player().position(), 500u);
    window->findChild<QDockWidget*>(QStringLiteral("player"))->close();
    EXPECT_FALSE(player->isChecked());
    EXPECT_FALSE(animation.isActive());
}

TEST_F(GuiTest, StitchOutPictureDrawnInStepsMatchesOneDrawnAtOnce) {
    HMKDocumentWindow* window = openWindow("flower.pes");
    ASSERT_TRUE(window);
    HMKCanvasRenderRequest request;
    request.design = std::make_shared<const HMKDesign>(window->document().design());
    const HMKDesign& design = *request.design;
    request.scale = 2;
    request.region = {design.xMin() - 5.0, design.yMin() - 5.0,
                      design.xMax() - design.xMin() + 10.0, design.yMax() - design.yMin() + 10.0};
    request.sewnRecords = 0;
    HMKCanvasImage stepped{request, renderCanvasImage(request)};
    HMKDesign copy = design;
    for (std::uint64_t to : {1, 2, 3, 4, 50, 52, 53, 1000, 2000, 2001, 6000, 6001, 9000}) {
        drawSewnRecords(stepped, copy, to);
    }
    request.sewnRecords = 9000;
    const QImage atOnce = renderCanvasImage(request);
    ASSERT_EQ(stepped.image.size(), atOnce.size());
    EXPECT_EQ(differingPixels(stepped.image, atOnce), 0);
    EXPECT_EQ(copy.stitches(), design.stitches());
}

TEST_F(GuiTest, RulersAndMeasuringFollowTheUnit) {
    HMKDocumentWindow* window = openWindow("flower.pes");
    ASSERT_TRUE(window);
    HMKDesignCanvas& canvas = window->canvas();
    const QSize before = canvas.viewport()->size();
    window->action(HMKCommand::showRulers)->trigger();
    EXPECT_TRUE(settings_->value(HMKSettings::showRulers));
    EXPECT_EQ(canvas.findChildren<HMKRuler*>().size(), 2);
    EXPECT_EQ(canvas.viewport()->width(), before.width() - HMKRuler::kThickness);

    window->action(HMKCommand::measure)->trigger();
    ASSERT_TRUE(canvas.isMeasuring());
    const HMKCanvasGeometry& geometry = canvas.canvasGeometry();
    const QPoint from = geometry.toPixels(HMKPoint{0, 0}).toPoint();
    const QPoint to = from + QPoint(30, -40);
    QTest::mousePress(canvas.viewport(), Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(canvas.viewport(), to);
    QTest::mouseRelease(canvas.viewport(), Qt::LeftButton, Qt::NoModifier, to);
    const double millimetres = 50 / geometry.scale / 10;
    EXPECT_EQ(canvas.measurementText(),
              QString::fromStdString(HMKValueTransformer::transformedValue(millimetres)) +
                  QStringLiteral(", 53.1\u00B0"));
    EXPECT_FALSE(window->document().hasSelection());
    settings_->setValue(HMKSettings::measurementUnit, HMKMeasurementUnit::fractionalInches);
    EXPECT_TRUE(canvas.measurementText().contains(QLatin1Char('"')));
    QTest::keyClick(&canvas, Qt::Key_Escape);
    EXPECT_TRUE(canvas.measurementText().isEmpty());
}

TEST_F(GuiTest, PrintoutsGoToPdfWithThePrintOptions) {
    HMKDocumentWindow* window = openWindow("flower.pes");
    ASSERT_TRUE(window);
    const QString path = QString::fromStdString((scratch_ / "flower.pdf").string());
    dialogHooks().saveFileName = [&path](QWidget*, const QString&, const QString&) { return path; };
    window->action(HMKCommand::printTemplate)->trigger();
    window->action(HMKCommand::exportPdf)->trigger();
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().startsWith("%PDF"));
    EXPECT_TRUE(alerts_.empty());

    QPdfWriter writer(QString::fromStdString((scratch_ / "direct.pdf").string()));
    EXPECT_TRUE(window->printTo(writer));
}

TEST_F(GuiTest, NeedleSoundIsAShortFadingClickAndSilentWithoutAudio) {
    const QByteArray samples = HMKNeedleSound::clickSamples(44100);
    ASSERT_EQ(samples.size(), 529 * 2);
    const auto* values = reinterpret_cast<const std::int16_t*>(samples.constData());
    int loudest = 0;
    for (int i = 0; i < 40; ++i) {
        loudest = std::max(loudest, std::abs(int(values[i])));
    }
    EXPECT_GT(loudest, 5000);
    EXPECT_LT(std::abs(int(values[528])), 100);
    // On a machine without an audio output this returns at once and says nothing.
    HMKNeedleSound sound;
    for (int i = 0; i < 3; ++i) {
        sound.click();
    }
    SUCCEED() << (sound.isAvailable() ? "played" : "no audio output");
}
