#include "document_test_support.h"

#include "formats/file_io.h"
#include "model/color_list.h"

TEST_F(DocumentTest, SavingEndsTheUndoHistoryAndWarnsUntilTheWarningIsTurnedOff) {
    auto document = openWithSelection("heart.jef");
    ASSERT_TRUE(document->rotateL());
    const std::filesystem::path target = scratch_ / "saved.dst";
    answer_.suppressed = true;
    HMKError error;
    ASSERT_TRUE(document->saveToURL(target, &error)) << error.message();
    EXPECT_EQ(document->undoStack()->count(), 0);
    EXPECT_FALSE(document->isModified());
    EXPECT_EQ(document->fileURL(), target);
    EXPECT_EQ(document->design().designType(), "DST");
    ASSERT_EQ(alerts_.size(), 1u);
    EXPECT_EQ(alerts_[0].text, "Always check hoop size & dimensions before stitching.");
    EXPECT_TRUE(alerts_[0].offersSuppression);
    EXPECT_TRUE(settings_->value(HMKSettings::alertWriteToURL));

    ASSERT_TRUE(document->rotateR());
    ASSERT_TRUE(document->save(&error));
    EXPECT_EQ(alerts_.size(), 1u);
    HMKDesign reread;
    ASSERT_TRUE(reread.importDesignFromURL(target));
    EXPECT_EQ(reread.numberOfStitches(), document->design().numberOfStitches());
}

TEST_F(DocumentTest, AFailedSaveChangesNeitherTheFileNorTheDocument) {
    // heart.pes is version 1; the same file claiming version 6 reads as PES 6.0.
    const std::filesystem::path otherVersion = sample("heart.pes");
    std::vector<std::uint8_t> bytes = *readWholeFile(otherVersion);
    std::copy_n("0060", 4, bytes.begin() + 4);
    ASSERT_TRUE(writeFileAtomically(otherVersion, bytes));
    auto document = openWithSelection("heart.jef");
    ASSERT_TRUE(document->flipH());
    const HMKDesign before = document->design();

    HMKError error;
    EXPECT_FALSE(document->saveToURL(otherVersion, &error));
    EXPECT_EQ(error.code, 204);
    EXPECT_EQ(error.message(), "Don't overwrite other PES versions.");
    EXPECT_EQ(*readWholeFile(otherVersion), bytes);
    EXPECT_FALSE(document->saveToURL(scratch_ / "missing" / "heart.dst", &error));
    expectIdentical(document->design(), before);
    EXPECT_EQ(document->undoStack()->count(), 1);
    EXPECT_EQ(document->fileURL().filename(), "heart.jef");
    // A PES file of version 1 is replaced.
    EXPECT_TRUE(document->saveToURL(sample("star.pes")));
    EXPECT_EQ(document->fileURL().filename(), "star.pes");
}

TEST_F(DocumentTest, TheDefaultPaletteIsAppliedOnlyWithoutASideFile) {
    const std::vector<std::string> palettes = HMKDocument::paletteMenu();
    const auto madeira = std::find(palettes.begin(), palettes.end(), "Madeira Rayon");
    ASSERT_NE(madeira, palettes.end());
    settings_->setValue(HMKSettings::defaultThreads, static_cast<int>(madeira - palettes.begin()));

    auto plain = makeDocument();
    ASSERT_TRUE(plain->readFromURL(sample("star.dst")));
    EXPECT_EQ(plain->design().designPalette(), "Madeira Rayon");
    EXPECT_EQ(plain->undoStack()->undoText(), "palette change");
    EXPECT_TRUE(plain->design().useThreadFile());

    auto withSideFile = makeDocument();
    ASSERT_TRUE(withSideFile->readFromURL(sample("star.dst", true)));
    EXPECT_EQ(withSideFile->design().designPalette(), "Janome");
    EXPECT_EQ(withSideFile->undoStack()->count(), 0);
}

TEST_F(DocumentTest, RevertDropsEditsAndACopyLeavesTheDocumentAlone) {
    auto document = openWithSelection("heart.jef");
    const HMKDesign opened = document->design();
    ASSERT_TRUE(document->deleteWithUndo());
    const HMKDesign edited = document->design();
    ASSERT_TRUE(document->exportCopyToURL(scratch_ / "copy.pes"));
    expectIdentical(document->design(), edited);
    EXPECT_EQ(document->fileURL().filename(), "heart.jef");
    EXPECT_TRUE(document->isModified());

    ASSERT_TRUE(document->revertToSaved());
    EXPECT_EQ(document->design().numberOfStitches(), opened.numberOfStitches());
    EXPECT_EQ(document->undoStack()->count(), 0);
    EXPECT_FALSE(document->isModified());
}
