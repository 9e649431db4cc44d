// hemlark-thumbnailer run the way file managers run it: a picture of every sample in its
// thread colours, and nothing at all, quickly, for files it cannot read.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QImage>
#include <QProcess>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "model/design.h"

namespace {

namespace fs = std::filesystem;

// The thumbnailer's exit code, or -1 when it crashed or was still running at the deadline
// (and was killed).
int runThumbnailer(const QStringList& arguments, int deadlineMilliseconds) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(HEMLARK_THUMBNAILER), arguments);
    if (!process.waitForFinished(deadlineMilliseconds)) {
        process.kill();
        process.waitForFinished();
        return -1;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QString text(const fs::path& path) {
    return QString::fromStdString(path.string());
}

class ThumbnailerTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ =
            fs::temp_directory_path() / ("hemlark-thumbnailer-tests-" + std::to_string(::getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    fs::path writeFile(const std::string& name, const std::vector<char>& bytes) {
        std::ofstream(folder_ / name, std::ios::binary).write(bytes.data(), bytes.size());
        return folder_ / name;
    }

    fs::path folder_;
};

// Every extension the design readers know.
const std::vector<std::string> kDesignExtensions = {".dst", ".pes", ".pec", ".jef", ".jpx", ".sew",
                                                    ".exp", ".vp3", ".ksm", ".pcs", ".pcd", ".pcq"};

std::vector<fs::path> sampleDesigns() {
    std::vector<fs::path> designs;
    for (const auto& entry : fs::directory_iterator(HEMLARK_SAMPLES_DIR)) {
        if (std::find(kDesignExtensions.begin(), kDesignExtensions.end(),
                      entry.path().extension()) != kDesignExtensions.end()) {
            designs.push_back(entry.path());
        }
    }
    std::sort(designs.begin(), designs.end());
    return designs;
}

// Shaded thread runs from 0.2 darker to 0.2 lighter than its colour in every component.
bool isShadeOf(QRgb pixel, const HMKColor& color) {
    const double components[] = {qRed(pixel) / 255.0, qGreen(pixel) / 255.0, qBlue(pixel) / 255.0};
    const double thread[] = {color.red(), color.green(), color.blue()};
    for (int i = 0; i < 3; ++i) {
        if (std::abs(components[i] - thread[i]) > 0.25) {
            return false;
        }
    }
    return true;
}

TEST_F(ThumbnailerTest, EverySampleGivesAPictureOfTheRequestedSizeInItsThreadColours) {
    const std::vector<fs::path> designs = sampleDesigns();
    ASSERT_GE(designs.size(), 6u);
    for (const fs::path& input : designs) {
        HMKDesign design;
        ASSERT_TRUE(design.importDesignFromURL(input));
        for (int size : {128, 256}) {
            SCOPED_TRACE(input.filename().string() + " at " + std::to_string(size));
            const fs::path output = folder_ / "thumbnail.png";
            ASSERT_EQ(runThumbnailer(
                          {QStringLiteral("-s"), QString::number(size), text(input), text(output)},
                          30'000),
                      0);
            QImage picture(text(output), "PNG");
            fs::remove(output);
            ASSERT_FALSE(picture.isNull());
            picture = picture.convertToFormat(QImage::Format_ARGB32);
            EXPECT_EQ(std::max(picture.width(), picture.height()), size);
            EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0) << "the background is transparent";

            std::vector<bool> threadSeen(design.threads().size(), false);
            int drawn = 0;
            int inThreadColours = 0;
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x) {
                    const QRgb pixel = picture.pixel(x, y);
                    // Edges of thin lines too: their straight colour is still the thread's.
                    if (qAlpha(pixel) < 64) {
                        continue;
                    }
                    ++drawn;
                    bool matched = false;
                    for (std::size_t t = 0; t < threadSeen.size(); ++t) {
                        if (isShadeOf(pixel, design.threads()[t].color)) {
                            threadSeen[t] = matched = true;
                        }
                    }
                    inThreadColours += matched;
                }
            }
            EXPECT_GT(drawn, size * size / 50) << "the design fills the picture";
            EXPECT_GT(inThreadColours, drawn * 9 / 10);
            for (std::size_t t = 0; t < threadSeen.size(); ++t) {
                EXPECT_TRUE(threadSeen[t]) << "thread " << t << " is not in the picture";
            }
        }
    }
}

TEST_F(ThumbnailerTest, FilesItCannotReadGiveNoPictureWithinASecond) {
    struct BadInput {
        std::string name;
        fs::path path;
    };
    std::vector<BadInput> inputs;
    for (const fs::path& sample : sampleDesigns()) {
        // 101 bytes: inside every header, and odd, which no EXP file is.
        std::ifstream in(sample, std::ios::binary);
        std::vector<char> bytes(101);
        in.read(bytes.data(), bytes.size());
        const std::string name = "cut-" + sample.filename().string();
        inputs.push_back({name, writeFile(name, bytes)});
    }
    std::mt19937 random(21);
    for (const std::string& extension : kDesignExtensions) {
        std::vector<char> bytes(4095);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        const std::string name = "random" + extension;
        inputs.push_back({name, writeFile(name, bytes)});
    }
    fs::create_directory(folder_ / "folder.dst");
    inputs.push_back({"a folder", folder_ / "folder.dst"});
    inputs.push_back({"a missing file", folder_ / "missing.dst"});
    const fs::path huge = writeFile("huge.exp", {});
    fs::resize_file(huge, 64 * 1024 * 1024);
    inputs.push_back({"a file far too large", huge});

    for (const BadInput& input : inputs) {
        SCOPED_TRACE(input.name);
        const fs::path output = folder_ / "thumbnail.png";
        EXPECT_GT(runThumbnailer(
                      {QStringLiteral("-s"), QStringLiteral("128"), text(input.path), text(output)},
                      1000),
                  0);
        EXPECT_FALSE(fs::exists(output));
    }
}

TEST_F(ThumbnailerTest, BadCommandLinesAreRefusedWithoutAPicture) {
    const QString input = QStringLiteral(HEMLARK_SAMPLES_DIR "/star.pes");
    const QString output = text(folder_ / "thumbnail.png");
    const std::vector<QStringList> commandLines = {
        {},
        {input},
        {QStringLiteral("-s"), QStringLiteral("big"), input, output},
        {QStringLiteral("-s"), QStringLiteral("0"), input, output},
        {QStringLiteral("-s"), QStringLiteral("100000"), input, output},
        {QStringLiteral("-s")},
    };
    for (const QStringList& arguments : commandLines) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        EXPECT_GT(runThumbnailer(arguments, 10'000), 0);
        EXPECT_FALSE(fs::exists(folder_ / "thumbnail.png"));
    }
}

}  // namespace
