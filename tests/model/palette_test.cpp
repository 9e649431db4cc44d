#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "model/color_list.h"
#include "model/design.h"
#include "model/resources.h"

namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

// Palettes and their name tables written into a resources folder of the test's own. Both are
// cached per process, so every test uses palette names of its own.
class PaletteTest : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        root_ = fs::temp_directory_path() /
                (std::string("hemlark-palette-") + info->test_suite_name() + "-" + info->name());
        fs::remove_all(root_);
        fs::create_directories(root_);
        setResourceOverrideDirectory(root_);
    }
    void TearDown() override {
        setResourceOverrideDirectory(std::nullopt);
        fs::remove_all(root_);
    }

    void writePalette(const std::string& palette, const std::string& text) {
        fs::path folder = root_ / "palettes" / (palette + ".clr");
        fs::create_directories(folder);
        std::ofstream(folder / (palette + ".clr"), std::ios::binary) << text;
    }
    void writeNames(const std::string& palette, const std::string& entries) {
        fs::create_directories(root_ / "strings");
        std::ofstream(root_ / "strings" / (palette + ".strings"), std::ios::binary) << entries;
    }

    fs::path root_;
};

struct ParseCase {
    const char* behaviour;
    const char* text;
    std::vector<std::string> orderedKeys;
};

TEST(ColorList, ParsesOnlyCompleteLinesAfterTheHeader) {
    const std::vector<ParseCase> cases = {
        {"a valid first line is still the header", "1 1 0 0 1 red\n2 0 1 0 1 green\n", {"green"}},
        {"commas separate like blanks",
         "header\n1,0.5,0.25,0.125,1,a\n2, 0.5 ,\t0.25,0.125 1 b\n",
         {"a", "b"}},
        {"five numbers without a key are skipped", "header\n1 0.5 0.5 0.5 1\n2 0 0 0 1 k\n", {"k"}},
        {"four numbers and a key are skipped", "header\n1 0.5 0.5 0.5 k\n", {}},
        {"blank lines, comments and the trailing line are skipped",
         "header\n\n# comment\n1 0 0 0 1 k\n\n",
         {"k"}},
        {"carriage returns are separators", "header\r\n1 0 0 0 1 k\r\n2 1 1 1 1 m\r\n", {"k", "m"}},
        {"the key runs to the next separator",
         "header\n1 0 0 0 1 Gold/42 rest of line\n",
         {"Gold/42"}},
        {"signs, exponents and bare fractions are numbers",
         "header\n-3 .5 1e0 +0.25 1. k\n",
         {"k"}},
        {"words in place of numbers fail the line", "header\n1 red 0 0 1 k\nx 0 0 0 1 m\n", {}},
        {"no lines at all", "", {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(HMKColorList::fromText("P", c.text).allSortedKeys(), c.orderedKeys)
            << c.behaviour;
    }
}

TEST(ColorList, CommaAndBlankSeparatedLinesGiveTheSameColour) {
    auto commas = HMKColorList::fromText("P", "h\n7,0.5,0.25,0.125,1,k\n");
    auto blanks = HMKColorList::fromText("P", "h\n7 0.5 0.25 0.125 1 k\n");
    ASSERT_TRUE(commas.colorWithKey("k"));
    EXPECT_EQ(*commas.colorWithKey("k"), HMKColor(0.5, 0.25, 0.125));
    EXPECT_EQ(*commas.colorWithKey("k"), *blanks.colorWithKey("k"));
}

TEST(ColorList, RepeatedKeyIsListedEachTimeAndKeepsItsLastColour) {
    auto list = HMKColorList::fromText("P", "h\n1 0 0 0 1 a\n2 1 1 1 1 b\n3 0.5 0.5 0.5 1 a\n");
    EXPECT_THAT(list.allSortedKeys(), ElementsAre("a", "b", "a"));
    EXPECT_THAT(list.allKeys(), ElementsAre("a", "b"));
    EXPECT_EQ(*list.colorWithKey("a"), HMKColor(0.5, 0.5, 0.5));
    EXPECT_FALSE(list.colorWithKey("c"));
}

TEST_F(PaletteTest, NamedPaletteIsParsedOncePerProcess) {
    writePalette("Cached Rayon", "h\n1 0 0 0 1 k\n");
    auto first = HMKColorList::named("Cached Rayon");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->name(), "Cached Rayon");
    // Changing the file afterwards does not matter: the parsed palette is kept.
    writePalette("Cached Rayon", "h\n1 0 0 0 1 other\n");
    auto second = HMKColorList::named("Cached Rayon");
    EXPECT_EQ(first, second);
    EXPECT_THAT(second->allSortedKeys(), ElementsAre("k"));
}

TEST_F(PaletteTest, MissingOrEscapingPaletteNamesLoadNothing) {
    writePalette("Escape", "h\n1 0 0 0 1 k\n");
    EXPECT_EQ(HMKColorList::named("Not Installed"), nullptr);
    EXPECT_EQ(HMKColorList::named(""), nullptr);
    EXPECT_EQ(HMKColorList::named("../palettes/Escape.clr/Escape"), nullptr);
}

TEST_F(PaletteTest, ThreadFromKeyTakesColourAndNamesFromThePalette) {
    writePalette("Key Poly", "h\n1 0 0 1 1 405\n2 1 1 1 1 001\n");
    writeNames("Key Poly", "\"Key Poly\" = \"Key Polyester\";\n\"405\" = \"Blue\";\n");

    EXPECT_EQ(HMKThread::fromPaletteKey("405", "Key Poly"),
              HMKThread(HMKColor(0, 0, 1), "Blue", "405", "Key Poly", "Key Polyester"));
    HMKThread unnamed = HMKThread::fromPaletteKey("001", "Key Poly");
    EXPECT_EQ(unnamed.color, HMKColor(1, 1, 1));
    EXPECT_EQ(unnamed.name, "Unknown color");
}

TEST_F(PaletteTest, ThreadFromUnknownKeyOrPaletteIsGreyAndKeepsKeyAndPalette) {
    writePalette("Fallback Poly", "h\n1 0 0 1 1 405\n");
    struct Case {
        std::string key, palette;
    };
    for (const Case& c : {Case{"999", "Fallback Poly"}, Case{"405", "No Such Palette"}}) {
        // A new thread: tension 13, no length, shown.
        EXPECT_EQ(HMKThread::fromPaletteKey(c.key, c.palette),
                  HMKThread(HMKColor(0.8, 0.8, 0.8), "Individual color (204, 204, 204)", c.key,
                            c.palette, ""))
            << c.palette;
    }
}

struct MatchCase {
    const char* behaviour;
    const char* paletteText;
    HMKColor target;
    std::string expectedKey;
};

TEST_F(PaletteTest, ChangeToColorPicksTheNearestThreadByTheWeightedDistance) {
    const std::vector<MatchCase> cases = {
        {"equally near threads: the first wins", "h\n1 0 0 0.2 1 first\n2 0 0 0.2 1 second\n",
         HMKColor(0, 0, 0), "first"},
        {"an exact colour is taken", "h\n1 0.9 0.9 0.9 1 near\n2 1 1 1 1 white\n3 0 0 0 1 k\n",
         HMKColor(1, 1, 1), "white"},
        {"green weighs more than red", "h\n1 0.3 0 0 1 reddish\n2 0 0.25 0 1 greenish\n",
         HMKColor(0, 0, 0), "reddish"},
        // The blue weight takes the signed red difference: with the mean red in its place
        // "violet" would be nearer.
        {"blue is weighted by the red difference",
         "h\n1 0.64 0 0.76 1 violet\n2 0.22 0 0.18 1 brown\n", HMKColor(0.91, 0, 0.1), "brown"},
    };
    int palette = 0;
    for (const auto& c : cases) {
        std::string name = "Match " + std::to_string(palette++);
        writePalette(name, c.paletteText);
        HMKThread thread(HMKColor(), "t", "k", "", "");
        ASSERT_TRUE(thread.changeToColor(c.target, name)) << c.behaviour;
        EXPECT_EQ(thread.key, c.expectedKey) << c.behaviour;
        EXPECT_EQ(thread.palette, name) << c.behaviour;
    }
}

TEST_F(PaletteTest, ChangeToColorTakesThePaletteColourAndNames) {
    writePalette("Names Rayon", "h\n1 0.5 0.5 0.5 1 1801\n");
    writeNames("Names Rayon", "\"Names Rayon\" = \"Names Rayon 40\";\n\"1801\" = \"Slate\";\n");
    HMKThread thread(HMKColor(), "t", "k", "", "");
    ASSERT_TRUE(thread.changeToColor(HMKColor(0.45, 0.5, 0.55), "Names Rayon"));
    EXPECT_EQ(thread,
              HMKThread(HMKColor(0.5, 0.5, 0.5), "Slate", "1801", "Names Rayon", "Names Rayon 40"));
}

TEST_F(PaletteTest, SpecialKeysAreMatchedOnlyWithinTheirOwnPalette) {
    writePalette("Special", "h\n1 1 1 1 1 x9\n2 0.9 0.9 0.9 1 010\n");
    HMKThread inside(HMKColor(), "t", "k", "Special", "Special");
    ASSERT_TRUE(inside.changeToColor(HMKColor(1, 1, 1), "Special"));
    EXPECT_EQ(inside.key, "x9");

    HMKThread outside(HMKColor(), "t", "k", "Other", "Other");
    ASSERT_TRUE(outside.changeToColor(HMKColor(1, 1, 1), "Special"));
    EXPECT_EQ(outside.key, "010");
}

TEST_F(PaletteTest, PaletteWithoutCandidatesLeavesAGreyThreadWithoutKey) {
    writePalette("Only Special", "h\n1 1 1 1 1 x9\n");
    writePalette("No Lines", "just a header\n");
    for (const char* palette : {"Only Special", "No Lines"}) {
        HMKThread thread(HMKColor(1, 0, 0), "Red", "5", "Other", "Other");
        ASSERT_TRUE(thread.changeToColor(HMKColor(1, 1, 1), palette));
        EXPECT_EQ(thread, HMKThread(HMKColor(), "", "", palette, "Threadcolors")) << palette;
    }
}

TEST(ThreadColor, EmptyPaletteMakesAnIndividualColour) {
    HMKThread thread(HMKColor(), "t", "405", "Brother", "Brother");
    ASSERT_TRUE(thread.changeToColor(HMKColor(1, 0.5, 0.2), ""));
    EXPECT_EQ(thread, HMKThread(HMKColor(1, 0.5, 0.2), "Individual color (255, 128, 51)", "", "",
                                "Threadcolors"));
}

TEST(ThreadColor, MissingPaletteIsLoggedAndLeavesTheThreadUnchanged) {
    HMKThread thread(HMKColor(0, 1, 0), "Green", "7", "Mine", "Mine");
    thread.length = 12;
    const HMKThread before = thread;
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(thread.changeToColor(HMKColor(1, 1, 1), "No Such Palette Anywhere"));
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                ::testing::HasSubstr("color palette not found"));
    EXPECT_EQ(thread, before);
}

TEST_F(PaletteTest, DesignChangeThreadConvertsOneThreadAndIgnoresBadIndexes) {
    writePalette("Design Rayon", "h\n1 0 0 0 1 black\n");
    HMKDesign design;
    design.threads() = {HMKThread(HMKColor(), "a", "1", "", ""),
                        HMKThread(HMKColor(), "b", "2", "", "")};
    EXPECT_TRUE(design.changeThread(1, HMKColor(0.1, 0.1, 0.1), "Design Rayon"));
    EXPECT_EQ(design.threads()[0].key, "1");
    EXPECT_EQ(design.threads()[1].key, "black");
    EXPECT_FALSE(design.changeThread(2, HMKColor(), "Design Rayon"));
    EXPECT_FALSE(design.changeThread(-1, HMKColor(), "Design Rayon"));
}

TEST(ColorCodes, TablesHaveTheirSizesAndEdgeEntries) {
    auto janome = HMKDesign::janomeColorCodes();
    auto brother = HMKDesign::brotherColorCodes();
    auto brotherRead = HMKDesign::brotherReadColorCodes();
    EXPECT_EQ(janome.size(), 79u);
    EXPECT_EQ(brother.size(), 64u);
    EXPECT_EQ(brotherRead.size(), 71u);
    const std::tuple<decltype(janome)*, int, const char*> entries[] = {
        {&janome, 0, "x9"},   {&janome, 14, "205"},      {&janome, 15, "209"},
        {&janome, 73, "275"}, {&janome, 78, "224"},      {&brother, 1, "007"},
        {&brother, 64, "x7"}, {&brotherRead, 92, "086"}, {&brotherRead, 66, "007"}};
    for (auto [table, index, key] : entries) {
        EXPECT_EQ(table->at(index), key) << index;
    }
    EXPECT_FALSE(janome.contains(79));
    EXPECT_FALSE(brother.contains(0));
    for (const auto& [index, key] : brother) {
        EXPECT_EQ(brotherRead.at(index), key) << index;
    }
    // Janome keys are used once.
    std::set<std::string> janomeKeys;
    for (const auto& [index, key] : janome) {
        EXPECT_TRUE(janomeKeys.insert(key).second) << key;
    }
}

// The palettes shipped in resources/, as made from the thread charts by the converter.
TEST(ShippedPalettes, LoadWholeAnswerTheCodeTablesAndMatchColours) {
    // Lines of each chart, in the order the palettes are offered (repeated keys included).
    const std::vector<std::pair<std::string, std::size_t>> charts = {
        {"WonderFil Splendor", 342}, {"Sulky Rayon", 289},    {"Robison-Anton Poly", 452},
        {"Poly-X40 Polyester", 286}, {"Marathon Rayon", 317}, {"Madeira Rayon", 357},
        {"Madeira Polyneon", 349},   {"Janome", 79},          {"Fufu Rayon", 713},
        {"Floriani Polyester", 286}, {"Coats Trilobal", 399}, {"Coats Rayon", 500},
        {"Brother Country", 61},     {"Brother", 64},         {"Ackermann Isacord", 398}};
    std::vector<std::string> offered;
    for (const auto& [name, lines] : charts) {
        offered.push_back(name);
        auto palette = HMKColorList::named(name);
        ASSERT_NE(palette, nullptr) << name;
        EXPECT_EQ(palette->allSortedKeys().size(), lines) << name;
    }
    EXPECT_EQ(HMKColorList::shippedPaletteNames(), offered);

    const std::pair<std::map<std::int32_t, std::string>, std::string> codeTables[] = {
        {HMKDesign::janomeColorCodes(), "Janome"},
        {HMKDesign::brotherColorCodes(), "Brother"},
        {HMKDesign::brotherReadColorCodes(), "Brother"}};
    for (const auto& [codes, palette] : codeTables) {
        for (const auto& [index, key] : codes) {
            const HMKThread thread = HMKThread::fromPaletteKey(key, palette);
            EXPECT_EQ(thread.paletteName, palette) << palette << " " << index;
            EXPECT_NE(thread.name, "Unknown color") << palette << " " << key;
        }
    }

    struct Match {
        HMKColor target;
        std::string fromPalette, intoPalette, key;
    };
    const Match matches[] = {
        {HMKColor(1, 0, 0), "", "Brother", "800"},
        {HMKColor(0, 0, 1), "", "Brother", "406"},
        {HMKColor(0.5, 0.5, 0.5), "", "Brother", "817"},
        {HMKColor(1, 0, 0), "", "Janome", "225"},
        {HMKColor(0, 0.5, 0), "", "Janome", "206"},
        {HMKColor(1, 0.5, 0), "", "Janome", "273"},
        {HMKColor(0, 0, 1), "", "Madeira Rayon", "1076"},
        {HMKColor(1, 1, 0), "", "Madeira Rayon", "1064"},
        // The appliqué pseudo-colours: exact matches, yet only reachable from their own palette.
        {HMKColor(1, 0.6, 0), "Madeira Rayon", "Brother", "214"},
        {HMKColor(1, 0.6, 0), "Brother", "Brother", "x9"},
        {HMKColor(1, 200 / 255.0, 200 / 255.0), "", "Brother", "124"},
        {HMKColor(1, 200 / 255.0, 200 / 255.0), "Brother", "Brother", "x7"},
        {HMKColor(0, 0, 0), "", "Janome", "002"},
    };
    for (const Match& m : matches) {
        HMKThread thread(HMKColor(), "t", "k", m.fromPalette, m.fromPalette);
        ASSERT_TRUE(thread.changeToColor(m.target, m.intoPalette));
        EXPECT_EQ(thread.key, m.key) << m.intoPalette << " from '" << m.fromPalette << "'";
    }
}

// The converter script turns thread charts into the files read above.
TEST_F(PaletteTest, ConverterOutputLoadsAsPaletteAndNames) {
    if (std::system("python3 --version > /dev/null 2>&1") != 0) {
        GTEST_SKIP() << "python3 is not installed";
    }
    fs::path charts = root_ / "charts";
    fs::create_directories(charts);
    std::ofstream(charts / "Chart Rayon.tsv") << "key\tname\tred\tgreen\tblue\n"
                                                 "1001\tSnow \"White\"\t255\t255\t255\n"
                                                 "1147\tNavy\t0\t0\t128\n"
                                                 "x9\tSpecial\t10\t20\t30\n";
    std::string command = std::string("python3 '") + HEMLARK_SCRIPTS_DIR + "/convert-palettes' '" +
                          charts.string() + "' --resources '" + root_.string() + "' > /dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);

    auto list = HMKColorList::named("Chart Rayon");
    ASSERT_NE(list, nullptr);
    EXPECT_THAT(list->allSortedKeys(), ElementsAre("1001", "1147", "x9"));
    EXPECT_EQ(*list->colorWithKey("1147"), HMKColor(0, 0, 128 / 255.0));

    HMKThread thread = HMKThread::fromPaletteKey("1001", "Chart Rayon");
    EXPECT_EQ(thread.color, HMKColor(1, 1, 1));
    EXPECT_EQ(thread.name, "Snow \"White\"");
    EXPECT_EQ(thread.paletteName, "Chart Rayon");
}

}  // namespace
