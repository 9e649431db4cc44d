#include "document_test_support.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>

#include "document/pasteboard.h"
#include "model/archive.h"

namespace {

// Records that are neither jumps nor colour changes, only the selected ones with onlySelected.
std::size_t sewnCount(const HMKDesign& design, bool onlySelected) {
    return static_cast<std::size_t>(
        std::count_if(design.stitches().begin(), design.stitches().end(), [&](const HMKStitch& s) {
            return !s.isJumpStitch && !s.isColorChange && (s.isSelected || !onlySelected);
        }));
}

}  // namespace

TEST_F(DocumentTest, CopyWithoutASelectionChangesNothing) {
    QGuiApplication::clipboard()->setText("kept");
    auto document = makeDocument();
    ASSERT_TRUE(document->readFromURL(sample("star.jef")));
    const HMKDesign before = document->design();
    EXPECT_FALSE(document->copy());
    EXPECT_FALSE(document->cut());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "kept");
    EXPECT_FALSE(HMKDocument::canPaste());
    expectIdentical(document->design(), before);
    EXPECT_EQ(document->undoStack()->count(), 0);
}

TEST_F(DocumentTest, CopyOffersTheSelectionAsDesignPictureAndText) {
    auto document = openWithSelection("heart.jef");
    const HMKDesign before = document->design();
    ASSERT_TRUE(document->copy());
    expectIdentical(document->design(), before);

    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_TRUE(data);
    const QByteArray archive = data->data(kHMKDesignMimeType);
    auto copied = unarchiveDesign({reinterpret_cast<const std::uint8_t*>(archive.constData()),
                                   static_cast<std::size_t>(archive.size())});
    ASSERT_TRUE(copied);
    EXPECT_LT(copied->stitches().size(), before.stitches().size());
    EXPECT_GT(copied->stitches().size(), 0u);
    EXPECT_FALSE(copied->selectionActive());
    EXPECT_EQ(sewnCount(*copied, true), 0u);
    EXPECT_EQ(data->text().toStdString(), copied->description());
    EXPECT_FALSE(QImage::fromData(data->data(kHMKPngMimeType), "PNG").isNull());
}

TEST_F(DocumentTest, PasteLeavesExactlyThePastedStitchesSelected) {
    auto source = openWithSelection("heart.jef");
    ASSERT_TRUE(source->copy());
    const HMKDesign copied = *readDesignFromClipboard();

    auto target = openWithSelection("star.jef");
    const std::size_t original = target->design().stitches().size();
    // Pasting from another program goes through the archive, not the design object.
    for (bool fromArchive : {false, true}) {
        if (fromArchive) {
            auto* foreign = new QMimeData;
            const std::vector<std::uint8_t> bytes = archiveDesign(copied);
            foreign->setData(kHMKDesignMimeType,
                             QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                        static_cast<qsizetype>(bytes.size())));
            QGuiApplication::clipboard()->setMimeData(foreign);
            target->undo();
        }
        ASSERT_TRUE(HMKDocument::canPaste());
        ASSERT_TRUE(target->paste());
        EXPECT_EQ(target->undoStack()->undoText(), "paste");
        const HMKDesign& pasted = target->design();
        // The pasted part follows a colour change; its leading jumps merge into the jump that
        // brings the needle there, and colour changes are made afresh, unselected, by the
        // normalisation of jumps.
        const auto firstSelected = std::find_if(pasted.stitches().begin(), pasted.stitches().end(),
                                                [](const HMKStitch& s) { return s.isSelected; });
        EXPECT_GE(firstSelected - pasted.stitches().begin(), static_cast<std::ptrdiff_t>(original));
        EXPECT_TRUE(std::all_of(firstSelected, pasted.stitches().end(), [](const HMKStitch& s) {
            return s.isSelected || s.isColorChange;
        }));
        EXPECT_EQ(sewnCount(pasted, true), sewnCount(copied, false));
        EXPECT_TRUE(pasted.selectionActive());
        EXPECT_EQ(pasted.numberOfThreads(), 3 + copied.numberOfThreads());
    }
}

TEST_F(DocumentTest, CutCopiesAndDeletesInOneStepAndDamagedDataIsReported) {
    auto document = openWithSelection("heart.jef");
    const HMKDesign before = document->design();
    ASSERT_TRUE(document->cut());
    EXPECT_TRUE(HMKDocument::canPaste());
    EXPECT_EQ(document->undoStack()->undoText(), "cut");
    EXPECT_LT(document->design().stitches().size(), before.stitches().size());

    auto* damaged = new QMimeData;
    damaged->setData(kHMKDesignMimeType, "bplist00 but nothing more");
    QGuiApplication::clipboard()->setMimeData(damaged);
    EXPECT_FALSE(document->paste());
    ASSERT_EQ(alerts_.size(), 1u);
    EXPECT_EQ(alerts_[0].title, "Paste Design");
    EXPECT_EQ(document->undoStack()->count(), 1);
}
