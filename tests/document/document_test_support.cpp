#include "document_test_support.h"

#include <tuple>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QThread>

#include "document/recovery.h"
#include "support/test_support.h"

namespace {

// One application and one temporary home for the state and settings folders per program.
class DocumentEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("XDG_STATE_HOME", home_.filePath("state").toUtf8());
        qputenv("XDG_CONFIG_HOME", home_.filePath("config").toUtf8());
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        application_ = std::make_unique<QGuiApplication>(argc_, argv_);
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

// The fields sameDesign leaves out.
auto fieldsOf(const HMKDesign& d) {
    return std::tuple(d.designName(), d.designType(), d.designVersion(),
                      d.designLocation().string(), d.hoopName(), d.hoopCode(), d.useThreadFile());
}

}  // namespace

void expectIdentical(const HMKDesign& actual, const HMKDesign& expected) {
    EXPECT_TRUE(sameDesign(actual, expected));
    EXPECT_EQ(fieldsOf(actual), fieldsOf(expected));
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
    std::filesystem::remove_all(HMKRecoveryStore::folder());
    std::filesystem::create_directories(scratch_);
    settings_ =
        std::make_unique<HMKSettings>(QString::fromStdString((scratch_ / "x.conf").string()));
    answer_ = {};
}

void DocumentTest::TearDown() {
    settings_.reset();
    std::filesystem::remove_all(scratch_);
    std::filesystem::remove_all(HMKRecoveryStore::folder());
}

std::filesystem::path DocumentTest::sample(const std::string& name, bool withThreads) {
    std::filesystem::path source = std::filesystem::path(HEMLARK_SAMPLES_DIR) / name;
    std::filesystem::path copy = scratch_ / name;
    std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing);
    if (withThreads) {
        std::filesystem::copy_file(source.replace_extension("threads"),
                                   std::filesystem::path(copy).replace_extension("threads"));
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
    EXPECT_TRUE(document->readFromURL(sample(name)));
    const HMKDesign& d = document->design();
    document->selectInRect(
        {d.xMin() - 1, d.yMin() - 1, (d.xMax() - d.xMin()) / 2 + 1, d.yMax() - d.yMin() + 2},
        false);
    return document;
}
