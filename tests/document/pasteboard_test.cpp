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

// What another program puts on the clipboard: the private type only.
void putForeignData(const QByteArray& archive) {
    auto* data = new QMimeData;
    data->setData(kHMKDesignMimeType, archive);
    QGuiApplication::clipboard()->setMimeData(data);
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

TEST_F(DocumentTest, CopyOffersOnlyTheSelectionAsDesignPictureAndText) {
    auto document = openWithSelection("heart.jef");
    const HMKDesign before = document->design();
    ASSERT_TRUE(document->copy());
    expectIdentical(document->design(), before);
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    const QByteArray archive = data->data(kHMKDesignMimeType);
    auto copied = unarchiveDesign({reinterpret_cast<const std::uint8_t*>(archive.constData()),
                                   static_cast<std::size_t>(archive.size())});
    ASSERT_TRUE(copied);
    EXPECT_GT(sewnCount(*copied, false), 0u);
    EXPECT_LT(copied->stitches().size(), before.stitches().size());
    EXPECT_EQ(sewnCount(*copied, true), 0u);
    EXPECT_EQ(data->text().toStdString(), copied->description());
    EXPECT_FALSE(QImage::fromData(data->data(kHMKPngMimeType), "PNG").isNull());
}

TEST_F(DocumentTest, PasteLeavesExactlyThePastedStitchesSelected) {
    ASSERT_TRUE(openWithSelection("heart.jef")->copy());
    const HMKDesign copied = *readDesignFromClipboard();
    auto target = openWithSelection("star.jef");
    const std::size_t original = target->design().stitches().size();
    // From this program the design object itself is pasted; from others, the archive.
    for (bool fromArchive : {false, true}) {
        if (fromArchive) {
            const std::vector<std::uint8_t> bytes = archiveDesign(copied);
            putForeignData(QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                      static_cast<qsizetype>(bytes.size())));
            target->undo();
        }
        ASSERT_TRUE(HMKDocument::canPaste());
        ASSERT_TRUE(target->paste());
        EXPECT_EQ(target->undoStack()->undoText(), "paste");
        const std::vector<HMKStitch>& stitches = target->design().stitches();
        // The pasted part's leading jumps merge into the jump that brings the needle there,
        // and the normalisation of jumps makes colour changes afresh, unselected.
        const auto first = std::find_if(stitches.begin(), stitches.end(),
                                        [](const HMKStitch& s) { return s.isSelected; });
        EXPECT_GE(first - stitches.begin(), static_cast<std::ptrdiff_t>(original));
        EXPECT_TRUE(std::all_of(first, stitches.end(), [](const HMKStitch& s) {
            return s.isSelected || s.isColorChange;
        }));
        EXPECT_EQ(sewnCount(target->design(), true), sewnCount(copied, false));
        EXPECT_EQ(target->design().numberOfThreads(), 3 + copied.numberOfThreads());
    }
}

TEST_F(DocumentTest, DamagedClipboardDataIsReportedAndChangesNothing) {
    auto document = openWithSelection("heart.jef");
    putForeignData("bplist00 but nothing more");
    EXPECT_FALSE(document->paste());
    ASSERT_EQ(alerts_.size(), 1u);
    EXPECT_EQ(alerts_[0].title, "Paste Design");
    EXPECT_EQ(document->undoStack()->count(), 0);
}
