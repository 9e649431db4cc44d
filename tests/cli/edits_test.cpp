// Each editing option calls its one design operation with the values given, in command-line
// order; checked in process against the direct calls on a sample design.
#include <gtest/gtest.h>

#include <algorithm>

#include "cli/edits.h"
#include "support/test_support.h"

namespace {

HMKEditList parsedEdits(std::vector<std::string> arguments) {
    CLI::App app;
    HMKEditList edits;
    addEditOptions(app, edits);
    std::reverse(arguments.begin(), arguments.end());
    app.parse(arguments);
    return edits;
}

// Three colour blocks of stitches around the origin, the middle one selected. Stitch 2 runs
// through (-47.75, -35.5), stitch 19 through (16, 33.5).
HMKDesign threeBlocks() {
    Stitches stitches = {jump(-50, -40)};
    for (int block = 0; block < 3; ++block) {
        if (block > 0)
            stitches.push_back(change());
        for (int i = 0; i < 8; ++i) {
            const HMKStitch next = stitch(i % 2 ? 12.5f : -4, block == 1 ? 6 : 3);
            stitches.push_back(block == 1 ? selected(next) : next);
        }
    }
    return makeDesign(stitches);
}

}  // namespace

// Each option's effect on a design of three blocks, against tests/golden/edit-options.txt.
TEST(EditOptions, EachOptionCallsItsOperationInTheOrderGiven) {
    ScratchFolder folder;
    const auto other = folder.file("other.dst");
    ASSERT_TRUE(threeBlocks().exportDstDesignToURL(other));
    const std::vector<std::string> cases[] = {
        {"--select-all", "--invert-selection"},
        {"--deselect-all"},
        {"--select-rect", "-10,-10,30,40", "--unselect-rect", "0,0,5,5"},
        {"--select-stitch", "-47.75,-35.5", "--select-block", "16,33.5"},
        {"--move", "25.5,-40", "--resize", "1.5", "--rotate", "-30"},
        {"--flip", "V", "--flip", "H", "--center"},
        {"--delete"},
        {"--to-jumps"},
        {"--select-all", "--to-stitches"},
        {"--basting", "3,5", "--optimize", "JEF"},
        {"--insert-thread", "--delete-thread", "1", "--move-thread", "0,2"},
        {"--append", other.string()},
        {"--palette", "", "--recolor", "1,10,20,30"},
        {"--palette", "Janome", "--recolor", "0,200,30,40,Brother"},
        {"--hoop", "Janome,4"},
        {"--hoop", "Janome,-1"},
    };
    std::string trace;
    for (const auto& arguments : cases) {
        HMKDesign design = threeBlocks();
        design.setSelectionActive(true);
        HMKError error;
        EXPECT_TRUE(applyEdits(design, parsedEdits(arguments), &error)) << error.message();
        trace += "#";
        for (const auto& argument : arguments)
            trace += " " + (argument == other.string() ? "other.dst" : argument);
        trace += "\n" + describe(design);
    }
    expectGolden(trace, "edit-options.txt");
}

TEST(EditOptions, FailuresStopTheEditsWithTheirError) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--select-all", "--flip", "v", "--delete"},
         "70: Unable to flip the design (invalid orientation)."},
        {{"--recolor", "5,0,0,0"}, "1: Thread index 5 is out of range (0 to 2)."},
        {{"--palette", "No Such Palette"},
         "140: " + makeError(140, "color palette not found").message()},
        {{"--hoop", "Pfaff,99"}, "1: No Pfaff hoop has the code 99."},
        {{"--append", "none.xyz"}, "10: Unknown file format (UTI)."},
    };
    for (const auto& [arguments, message] : cases) {
        HMKDesign design = threeBlocks();
        HMKError error;
        EXPECT_FALSE(applyEdits(design, parsedEdits(arguments), &error)) << message;
        EXPECT_EQ(std::to_string(error.code) + ": " + error.message(), message);
        EXPECT_FALSE(design.stitches().empty()) << message;  // --delete never ran
    }
    HMKDesign bare;
    HMKError error;
    EXPECT_FALSE(applyEdits(bare, parsedEdits({"--recolor", "0,1,2,3"}), &error));
    EXPECT_EQ(error.message(), "Thread index 0 is out of range (the design has no threads).");
}

TEST(EditOptions, KeepTheirTextAndRefuseMalformedValues) {
    std::vector<std::string> texts;
    for (const HMKEdit& edit :
         parsedEdits({"--select-all", "--move", "-5,10", "--rotate", "-90", "--move", "1,2"}))
        texts.push_back(edit.option);
    EXPECT_EQ(texts, (std::vector<std::string>{"--select-all", "--move -5,10", "--rotate -90",
                                               "--move 1,2"}));
    const std::vector<std::vector<std::string>> malformed = {
        {"--move", "1"},          {"--move", "1,2,3"},
        {"--move", "a,b"},        {"--resize", "0"},
        {"--resize", "x"},        {"--rotate", "4.5"},
        {"--basting", "0,5"},     {"--recolor", "0,300,0,0"},
        {"--recolor", "0,1,2"},   {"--move-thread", "1"},
        {"--hoop", "Janome"},     {"--select-rect", "1,2,3"},
        {"--delete-thread", "x"}, {"--select-stitch", "1,2,3"},
        {"--move", "inf,0"},      {"--recolor", "0,-1,0,0"},
    };
    for (const auto& arguments : malformed) {
        EXPECT_THROW(parsedEdits(arguments), CLI::ParseError)
            << arguments[0] << " " << arguments[1];
    }
}
