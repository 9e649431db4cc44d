// What the document tests share: an offscreen QGuiApplication with its own settings and state
// folders (set up once per test program), a fixture that opens copies of the samples in a
// scratch folder and records every alert, and a bit-for-bit design comparison.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "document/document.h"

// Every field, every stitch and every thread equal, floats bit for bit.
void expectIdentical(const HMKDesign& actual, const HMKDesign& expected);

// Runs the event loop until done() holds or the timeout passes; returns done().
bool waitFor(const std::function<bool()>& done,
             std::chrono::milliseconds timeout = std::chrono::seconds(10));

class DocumentTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A copy of samples/name (and its thread side file with withThreads) in the scratch folder.
    std::filesystem::path sample(const std::string& name, bool withThreads = false);
    // A document with the test's settings whose alerts are recorded and answered with answer_.
    std::unique_ptr<HMKDocument> makeDocument();
    // A document holding the sample, with the stitches of its first half selected.
    std::unique_ptr<HMKDocument> openWithSelection(const std::string& name);

    std::filesystem::path scratch_;
    std::unique_ptr<HMKSettings> settings_;
    std::vector<HMKAlert> alerts_;
    HMKAlertAnswer answer_;
};
