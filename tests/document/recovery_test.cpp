#include "document_test_support.h"

#include <QFileInfo>
#include <QProcess>

#include "formats/file_io.h"
#include "model/archive.h"

namespace {

std::optional<HMKRecoveryEntry> pendingEntryFor(const std::filesystem::path& url) {
    for (const HMKRecoveryEntry& entry : HMKRecoveryStore::pendingRecoveries()) {
        if (entry.documentURL == url) {
            return entry;
        }
    }
    return std::nullopt;
}

// The design as the recovery file keeps it (colours at single precision).
HMKDesign archived(const HMKDesign& design) {
    return *unarchiveDesign(archiveDesign(design));
}

}  // namespace

TEST_F(DocumentTest, AKilledProcessGetsItsEditBack) {
    const std::filesystem::path design = sample("heart.jef");
    QProcess child;
    child.start(HEMLARK_RECOVERY_CHILD,
                {QString::fromStdString(design.string()),
                 QString::fromStdString((scratch_ / "child.conf").string())});
    QByteArray output;
    ASSERT_TRUE(waitFor([&] {
        child.waitForReadyRead(10);
        output += child.readAllStandardOutput();
        return output.contains("written") || child.state() == QProcess::NotRunning;
    }));
    ASSERT_EQ(child.state(), QProcess::Running);
    child.kill();
    ASSERT_TRUE(child.waitForFinished());

    auto expected = makeDocument();
    ASSERT_TRUE(expected->readFromURL(design));
    expected->selectAll();
    expected->rotateByDegrees(45);

    const auto entry = pendingEntryFor(design);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->displayName(), "heart.jef");
    auto restored = makeDocument();
    HMKError error;
    ASSERT_TRUE(restored->restoreRecovery(*entry, &error)) << error.message();
    expectIdentical(restored->design(), archived(expected->design()));
    EXPECT_TRUE(restored->isModified());
    EXPECT_EQ(restored->fileURL(), design);
    // The restored document owns the file now; closing it removes the file.
    EXPECT_FALSE(pendingEntryFor(design));
    restored->close();
    EXPECT_FALSE(std::filesystem::exists(entry->file));
}

TEST_F(DocumentTest, TheRecoveredDesignReplacesTheFileOnlyWhenEditedOrChanged) {
    struct Case {
        const char* name;
        bool edited, fileChanged, fileRemoved, expectRecovered;
    };
    const std::vector<Case> cases = {{"edited", true, false, false, true},
                                     {"not edited", false, false, false, false},
                                     {"file changed since", false, true, false, true},
                                     {"file gone", false, false, true, true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::filesystem::path file = sample("star.jef");
        auto opened = makeDocument();
        ASSERT_TRUE(opened->readFromURL(file));
        HMKDesign recovered = opened->design();
        recovered.selectAll();
        recovered.rotateSelectionByDegrees(90);

        HMKRecoveryState state;
        state.documentURL = file;
        state.modificationDate = QFileInfo(QString::fromStdString(file.string())).lastModified();
        if (c.fileChanged) {
            state.modificationDate = state.modificationDate->addSecs(-60);
        }
        state.isEdited = c.edited;
        state.viewScaling = 2.5;
        state.selectedThread = 1;
        state.selectionMode = static_cast<std::int32_t>(HMKSelectionMode::block);
        const QString id = QString("case-") + c.name;
        ASSERT_TRUE(writeRecoveryFile(HMKRecoveryStore::fileForId(id), state, recovered));
        if (c.fileRemoved) {
            std::filesystem::remove(file);
        }

        const auto entry = pendingEntryFor(file);
        ASSERT_TRUE(entry);
        auto restored = makeDocument();
        HMKError error;
        ASSERT_TRUE(restored->restoreRecovery(*entry, &error)) << error.message();
        EXPECT_EQ(restored->isModified(), c.expectRecovered);
        HMKDesign expected = c.expectRecovered ? archived(recovered) : opened->design();
        expected.setIsShown(false, 0);
        expected.setIsShown(false, 2);
        expectIdentical(restored->design(), expected);
        EXPECT_EQ(restored->shownThread(), 1);
        EXPECT_EQ(restored->viewState().scaling, 2.5);
        EXPECT_EQ(restored->viewState().selectionMode, HMKSelectionMode::block);
        restored->close();
    }
}

TEST_F(DocumentTest, TheRecoveryFileFollowsUnsavedEdits) {
    const std::filesystem::path file = sample("star.jef");
    auto document = makeDocument();
    document->setRecoveryDelay(std::chrono::milliseconds(10));
    ASSERT_TRUE(document->readFromURL(file));
    document->selectAll();
    ASSERT_TRUE(document->flipV());
    ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(document->recoveryFile()); }));
    // Owned by a running document: neither offered nor restorable.
    EXPECT_TRUE(HMKRecoveryStore::pendingRecoveries().empty());
    const QString id = QString::fromStdString(document->recoveryFile().stem().string());
    EXPECT_FALSE(makeDocument()->restoreRecovery({id, document->recoveryFile(), file, {}}));

    document->undo();
    ASSERT_TRUE(waitFor([&] { return !std::filesystem::exists(document->recoveryFile()); }));
    document->redo();
    ASSERT_TRUE(waitFor([&] { return std::filesystem::exists(document->recoveryFile()); }));
    ASSERT_TRUE(document->save());
    ASSERT_TRUE(waitFor([&] { return !std::filesystem::exists(document->recoveryFile()); }));

    // Quitting with unsaved edits keeps them for the next start.
    ASSERT_TRUE(document->flipH());
    document->showThread(0);
    document.reset();
    const auto entry = pendingEntryFor(file);
    ASSERT_TRUE(entry);
    const auto state = readRecoveryFile(entry->file);
    ASSERT_TRUE(state);
    EXPECT_TRUE(state->isEdited);
    EXPECT_EQ(state->selectedThread, 0);
}

TEST_F(DocumentTest, ADamagedRecoveryFileIsRefused) {
    HMKError error;
    EXPECT_FALSE(decodeRecoveryState("not a recovery file", &error));
    EXPECT_EQ(error.code, kRecoveryUnreadableError);
    std::filesystem::create_directories(HMKRecoveryStore::folder());
    ASSERT_TRUE(writeFileAtomically(HMKRecoveryStore::fileForId("damaged"),
                                    std::vector<std::uint8_t>{0xA1, 0x01}));
    EXPECT_TRUE(HMKRecoveryStore::pendingRecoveries().empty());
    EXPECT_FALSE(makeDocument()->restoreRecovery(
        {"damaged", HMKRecoveryStore::fileForId("damaged"), {}, {}}, &error));
    EXPECT_EQ(error.code, kRecoveryUnreadableError);
}
