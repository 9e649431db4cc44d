#include "document_test_support.h"

#include <bit>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QThread>

#include "document/recovery.h"
#include "platform/qt_raster_provider.h"

namespace {

// One application and one temporary home for the state and settings folders per program.
class DocumentEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("XDG_STATE_HOME", QByteArray(home_.filePath("state").toUtf8()));
        qputenv("XDG_CONFIG_HOME", QByteArray(home_.filePath("config").toUtf8()));
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        application_ = std::make_unique<QGuiApplication>(argc_, argv_);
        installQtRasterProvider();
    }
    void TearDown() override { application_.reset(); }

private:
    QTemporaryDir home_;
    int argc_ = 1;
    char name_[16] = "document_tests";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

[[maybe_unused]] const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new DocumentEnvironment);

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

}  // namespace

void expectIdentical(const HMKDesign& actual, const HMKDesign& expected) {
    EXPECT_EQ(actual.designName(), expected.designName());
    EXPECT_EQ(actual.designType(), expected.designType());
    EXPECT_EQ(actual.designVersion(), expected.designVersion());
    EXPECT_EQ(actual.designLocation(), expected.designLocation());
    EXPECT_EQ(actual.designHoop().has_value(), expected.designHoop().has_value());
    if (actual.designHoop() && expected.designHoop()) {
        EXPECT_TRUE(*actual.designHoop() == *expected.designHoop());
        EXPECT_EQ(actual.designHoop()->code(), expected.designHoop()->code());
    }
    EXPECT_EQ(bits(actual.xMin()), bits(expected.xMin()));
    EXPECT_EQ(bits(actual.yMin()), bits(expected.yMin()));
    EXPECT_EQ(bits(actual.xMax()), bits(expected.xMax()));
    EXPECT_EQ(bits(actual.yMax()), bits(expected.yMax()));
    EXPECT_EQ(actual.useThreadFile(), expected.useThreadFile());
    EXPECT_EQ(actual.selectionActive(), expected.selectionActive());
    EXPECT_TRUE(actual.displayRange() == expected.displayRange());
    EXPECT_TRUE(actual.threads() == expected.threads());
    ASSERT_EQ(actual.stitches().size(), expected.stitches().size());
    for (std::size_t i = 0; i < actual.stitches().size(); ++i) {
        const HMKStitch& a = actual.stitches()[i];
        const HMKStitch& e = expected.stitches()[i];
        ASSERT_TRUE(bits(a.deltaX) == bits(e.deltaX) && bits(a.deltaY) == bits(e.deltaY) &&
                    a.isJumpStitch == e.isJumpStitch && a.isColorChange == e.isColorChange &&
                    a.isSelected == e.isSelected)
            << "stitch " << i;
    }
}

bool waitFor(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!done() && std::chrono::steady_clock::now() < end) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(5);
    }
    return done();
}

void DocumentTest::SetUp() {
    scratch_ = std::filesystem::temp_directory_path() /
               ("hemlark-document-tests-" + std::to_string(QCoreApplication::applicationPid()));
    std::filesystem::remove_all(scratch_);
    std::filesystem::remove_all(HMKRecoveryStore::folder());
    std::filesystem::create_directories(scratch_);
    settings_ =
        std::make_unique<HMKSettings>(QString::fromStdString((scratch_ / "hemlark.conf").string()));
    alerts_.clear();
    answer_ = {};
}

void DocumentTest::TearDown() {
    settings_.reset();
    std::filesystem::remove_all(scratch_);
    std::filesystem::remove_all(HMKRecoveryStore::folder());
}

std::filesystem::path DocumentTest::sample(const std::string& name, bool withThreads) {
    const std::filesystem::path source = std::filesystem::path(HEMLARK_SAMPLES_DIR) / name;
    const std::filesystem::path copy = scratch_ / name;
    std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing);
    if (withThreads) {
        std::filesystem::path threads = source;
        std::filesystem::copy_file(threads.replace_extension("threads"),
                                   std::filesystem::path(copy).replace_extension("threads"),
                                   std::filesystem::copy_options::overwrite_existing);
    }
    return copy;
}

std::unique_ptr<HMKDocument> DocumentTest::makeDocument() {
    auto document = std::make_unique<HMKDocument>(*settings_);
    document->setAlertHandler([this](const HMKAlert& alert) {
        alerts_.push_back(alert);
        return answer_;
    });
    return document;
}

std::unique_ptr<HMKDocument> DocumentTest::openWithSelection(const std::string& name) {
    auto document = makeDocument();
    HMKError error;
    EXPECT_TRUE(document->readFromURL(sample(name), &error)) << error.message();
    const HMKDesign& design = document->design();
    document->selectInRect(
        {design.xMin() - 1, design.yMin() - 1, (design.xMax() - design.xMin()) / 2 + 1,
         design.yMax() - design.yMin() + 2},
        false);
    return document;
}
