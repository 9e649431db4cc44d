#include <gtest/gtest.h>

#include "cli/edits.h"

namespace {

std::vector<std::string> parsedEdits(std::vector<std::string> arguments) {
    CLI::App app;
    HMKEditList edits;
    addEditOptions(app, edits);
    std::reverse(arguments.begin(), arguments.end());
    app.parse(arguments);
    std::vector<std::string> options;
    for (const HMKEdit& edit : edits) {
        options.push_back(edit.option);
    }
    return options;
}

}  // namespace

TEST(EditOptions, KeepTheCommandLineOrderAcrossRepeatedOptions) {
    EXPECT_EQ(parsedEdits({"--select-all", "--move", "-5,10", "--rotate", "45", "--deselect-all",
                           "--move", "1,2", "--select-all"}),
              (std::vector<std::string>{"--select-all", "--move -5,10", "--rotate 45",
                                        "--deselect-all", "--move 1,2", "--select-all"}));
}

TEST(EditOptions, AcceptNegativeNumbersAsValues) {
    EXPECT_EQ(parsedEdits({"--rotate", "-90", "--select-rect", "-10,-10,20,20"}),
              (std::vector<std::string>{"--rotate -90", "--select-rect -10,-10,20,20"}));
}

TEST(EditOptions, MalformedValuesAreUsageErrors) {
    const std::vector<std::vector<std::string>> malformed = {
        {"--move", "1"},          {"--move", "1,2,3"},
        {"--move", "a,b"},        {"--resize", "0"},
        {"--resize", "x"},        {"--rotate", "4.5"},
        {"--basting", "0,5"},     {"--recolor", "0,300,0,0"},
        {"--recolor", "0,1,2"},   {"--move-thread", "1"},
        {"--hoop", "Janome"},     {"--select-rect", "1,2,3"},
        {"--delete-thread", "x"}, {"--select-stitch", "1,2,3"},
    };
    for (const auto& arguments : malformed) {
        EXPECT_THROW(parsedEdits(arguments), CLI::ParseError)
            << arguments[0] << " " << arguments[1];
    }
}
