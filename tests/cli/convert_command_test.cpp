#include <nlohmann/json.hpp>

#include <cmath>
#include <fstream>
#include <functional>

#include "cli/design_json.h"
#include "model/color_list.h"
#include "tool_runner.h"

namespace {

// Where stitch index ends: a point that hits that stitch (and maybe later ones).
HMKPoint endOfStitch(const HMKDesign& design, std::size_t index) {
    HMKPoint point;
    for (std::size_t i = 0; i <= index; ++i) {
        point.x += design.stitches()[i].deltaX;
        point.y += design.stitches()[i].deltaY;
    }
    return point;
}

// The selection an edit case starts from, made by the tool's options and directly alike.
enum class Selection { none, all, centre };

struct EditCase {
    std::string name;
    Selection selection;
    std::vector<std::string> arguments;
    std::function<void(HMKDesign&)> operation;
};

const HMKRect kCentre{-150, -150, 300, 300};

std::vector<std::string> selectionArguments(Selection selection) {
    switch (selection) {
        case Selection::all:
            return {"--select-all"};
        case Selection::centre:
            return {"--select-rect", "-150,-150,300,300"};
        default:
            return {};
    }
}

void select(HMKDesign& design, Selection selection) {
    if (selection == Selection::all) {
        design.selectAll();
    } else if (selection == Selection::centre) {
        design.selectInRect(kCentre, false);
    }
}

// Every thread matched into the palette ("" makes individual colours).
void matchAllThreads(HMKDesign& design, const std::string& palette) {
    for (std::size_t i = 0; i < design.numberOfThreads(); ++i) {
        design.changeThread(static_cast<std::int32_t>(i), design.threads()[i].color, palette);
    }
}

std::vector<EditCase> editCases(const HMKDesign& design, const std::filesystem::path& other) {
    const HMKPoint end = endOfStitch(design, design.stitches().size() / 3);
    const HMKPoint onPetal{std::trunc(end.x), std::trunc(end.y)};
    const std::string petal = std::to_string(static_cast<long>(onPetal.x)) + "," +
                              std::to_string(static_cast<long>(onPetal.y));
    using enum Selection;
    std::vector<EditCase> cases = {
        {"select-all", all, {}, [](auto&) {}},
        {"deselect-all", all, {"--deselect-all"}, [](auto& d) { d.deselectAll(); }},
        {"invert-selection", centre, {"--invert-selection"}, [](auto& d) { d.invertAll(); }},
        {"select-rect", centre, {}, [](auto&) {}},
        {"unselect-rect",
         all,
         {"--unselect-rect", "-150,-150,300,300"},
         [](auto& d) { d.selectInRect(kCentre, true); }},
        {"select-stitch",
         none,
         {"--select-stitch", petal},
         [=](auto& d) { d.selectStitchAt(onPetal, 0.7f, false); }},
        {"select-block",
         none,
         {"--select-block", petal},
         [=](auto& d) { d.selectBlockAt(onPetal, 0.7f, false); }},
        {"move",
         centre,
         {"--move", "25.5,-40"},
         [](auto& d) {
             d.moveSelectionByVector({25.5, -40});
         }},
        {"resize", centre, {"--resize", "1.5"}, [](auto& d) { d.resizeSelectionByPercent(1.5f); }},
        {"rotate", centre, {"--rotate", "-30"}, [](auto& d) { d.rotateSelectionByDegrees(-30); }},
        {"flip",
         centre,
         {"--flip", "V", "--flip", "H"},
         [](auto& d) { d.flipSelection("V"), d.flipSelection("H"); }},
        {"center",
         all,
         {"--move", "100,50", "--center"},
         [](auto& d) {
             d.moveSelectionByVector({100, 50}), d.centerDesign();
         }},
        {"delete", centre, {"--delete"}, [](auto& d) { d.deleteSelection(); }},
        {"to-jumps", centre, {"--to-jumps"}, [](auto& d) { d.switchSelectionToJumps(true); }},
        {"to-stitches", all, {"--to-stitches"}, [](auto& d) { d.switchSelectionToJumps(false); }},
        {"basting", none, {"--basting", "3,5"}, [](auto& d) { d.addBastingWithLength(3, 5); }},
        {"insert-thread",
         none,
         {"--select-block", petal, "--insert-thread"},
         [=](auto& d) { d.selectBlockAt(onPetal, 0.7f, false), d.insertThreadBeforeSelection(); }},
        {"delete-thread",
         none,
         {"--delete-thread", "1"},
         [](auto& d) { d.deleteThreadAtIndex(1); }},
        {"move-thread",
         none,
         {"--move-thread", "0,2"},
         [](auto& d) { d.moveThreadFromIndex(0, 2); }},
        {"append",
         all,
         {"--append", other.string()},
         [=](auto& d) { d.appendDesign(imported(other)); }},
        {"palette-individual", none, {"--palette", ""}, [](auto& d) { matchAllThreads(d, ""); }},
        {"recolor",
         none,
         {"--recolor", "1,10,20,30"},
         [](auto& d) { d.changeThread(1, HMKColor(10 / 255.0, 20 / 255.0, 30 / 255.0), ""); }},
        {"hoop", none, {"--hoop", "Janome,4"}, [](auto& d) { d.setHoopFromVendor("Janome", 4); }},
        {"optimize", none, {"--optimize", "PES"}, [](auto& d) { d.optimizeJumpsFor("PES"); }},
    };
    // Matching into a named palette needs one to be installed.
    for (const std::string& palette : HMKColorList::shippedPaletteNames()) {
        if (HMKColorList::named(palette)) {
            cases.push_back({"palette-" + palette, none, {"--palette", palette}, [=](auto& d) {
                                 matchAllThreads(d, palette);
                             }});
            cases.push_back(
                {"recolor-" + palette, none, {"--recolor", "0,200,30,40," + palette}, [=](auto& d) {
                     d.changeThread(0, HMKColor(200 / 255.0, 30 / 255.0, 40 / 255.0), palette);
                 }});
            break;
        }
    }
    return cases;
}

class ConvertCommand : public ToolTest {};

}  // namespace

TEST_F(ConvertCommand, EveryEditDumpsWhatTheDesignOperationMakes) {
    const auto input = sample("flower.jef");
    const auto other = sample("star.jef");
    const HMKDesign original = imported(input);
    for (const EditCase& edit : editCases(original, other)) {
        const auto output = folder_ / (edit.name + ".json");
        std::vector<std::string> arguments = {"convert", input.string(), output.string()};
        for (const auto& part : {selectionArguments(edit.selection), edit.arguments}) {
            arguments.insert(arguments.end(), part.begin(), part.end());
        }
        ToolRun run = runTool(arguments);
        ASSERT_EQ(run.exitCode, 0) << edit.name << ": " << run.err;

        HMKDesign expected = original;
        select(expected, edit.selection);
        edit.operation(expected);
        const HMKJson dumped = HMKJson::parse(readText(output));
        const HMKJson wanted = designJson(expected, true);
        EXPECT_TRUE(dumped["records"] == wanted["records"]) << edit.name << ": records differ";
        EXPECT_EQ(dumped, wanted) << edit.name;
    }
}

TEST_F(ConvertCommand, DumpWithoutEditsHoldsTheImportedRecordsUnchanged) {
    const auto input = sample("heart.dst");
    ToolRun run = runTool({"convert", input.string(), (folder_ / "heart.json").string()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    HMKJson dumped = HMKJson::parse(readText(folder_ / "heart.json"));
    EXPECT_EQ(stitchesFromJson(dumped["records"]), imported(input).stitches());
}

TEST_F(ConvertCommand, WritesEveryWritableFormatAsTheExportDoes) {
    const auto input = sample("flower.dst");
    std::filesystem::create_directories(folder_ / "tool");
    std::filesystem::create_directories(folder_ / "direct");
    for (const std::string extension : {"dst", "pes", "pec", "jef", "exp", "pcs"}) {
        const auto output = folder_ / "tool" / ("flower." + extension);
        ToolRun run = runTool({"convert", input.string(), output.string()});
        EXPECT_EQ(run.exitCode, 0) << extension << ": " << run.err;

        const auto direct = folder_ / "direct" / ("flower." + extension);
        HMKDesign design = imported(input);
        design.setDesignLocation(direct);
        ASSERT_TRUE(design.exportDesignToURL(direct));
        EXPECT_TRUE(readText(output) == readText(direct)) << extension << " differs";
    }
}

TEST_F(ConvertCommand, ThreadSideFileFollowsTheOutputNotTheInput) {
    const auto input = sample("flower.dst");
    std::filesystem::create_directories(folder_ / "out");
    std::ofstream(folder_ / "out" / "flower.threads") << "stale";
    ToolRun run = runTool({"convert", input.string(), (folder_ / "out" / "flower.exp").string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_FALSE(std::filesystem::exists(folder_ / "out" / "flower.threads"));

    // With a side file beside the input the design uses it, and the output gets its own.
    HMKDesign design = imported(input);
    design.exportThreadsForDesign(input);
    run = runTool({"convert", input.string(), (folder_ / "out" / "flower.exp").string()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder_ / "out" / "flower.threads"));
    EXPECT_TRUE(std::filesystem::exists(folder_ / "flower.threads"));
}

TEST_F(ConvertCommand, DesignErrorsArePassedThroughWithExitOne) {
    const auto input = sample("star.pes");
    struct Case {
        std::vector<std::string> arguments;
        std::string message;
    };
    const std::vector<Case> cases = {
        {{(folder_ / "star.pcs").string(), "--hoop", "Pfaff,99"},
         "hemlark: error 1: No Pfaff hoop has the code 99.\n"},
        {{(folder_ / "star.dst").string(), "--append", (folder_ / "none.xyz").string()},
         "hemlark: " + (folder_ / "none.xyz").string() + ": No such file or directory\n"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> arguments = {"convert", input.string()};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, 1) << c.message;
        EXPECT_EQ(run.err, c.message);
    }
}

TEST(CommandLine, UsageErrorsExitWithTwo) {
    const std::vector<std::vector<std::string>> cases = {
        {},
        {"frobnicate"},
        {"info"},
        {"info", "a.dst", "--unit", "cm"},
        {"convert", "a.dst"},
        {"convert", "a.dst", "b.dst", "c.dst"},
        {"convert", "a.dst", "b.dst", "--resize", "0"},
        {"convert", "a.dst", "b.dst", "--move", "1"},
        {"convert", "a.dst", "b.dst", "--recolor", "0,256,0,0"},
        {"convert", "a.dst", "b.dst", "--bogus"},
        {"convert", "a.dst", "b.dst", "--out-dir", "out"},
        {"convert", "a.dst", "--to", "pes", "--jobs", "-1"},
        {"render", "a.dst"},
    };
    for (const auto& arguments : cases) {
        ToolRun run = runTool(arguments);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments) << run.err;
        EXPECT_NE(run.err, "") << testing::PrintToString(arguments);
    }
}

TEST(CommandLine, EveryCommandHasHelp) {
    for (const char* command : {"info", "convert", "render", "palettes", "hoops"}) {
        ToolRun run = runTool({command, "--help"});
        EXPECT_EQ(run.exitCode, 0) << command;
        EXPECT_NE(run.out.find("Usage:"), std::string::npos) << command;
        EXPECT_NE(run.out.find("Example"), std::string::npos) << command;
    }
}
