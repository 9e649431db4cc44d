#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/color_list.h"
#include "model/diagnostics.h"
#include "model/resources.h"
#include "support/test_support.h"

namespace {

using ::testing::ElementsAre;

// Palettes and their name tables written into a resources folder of the test's own, searched
// before the shipped ones. Both are cached per process, so every test uses names of its own.
class PaletteTest : public ::testing::Test {
protected:
    PaletteTest() { setResourceOverrideDirectory(folder_.path()); }
    ~PaletteTest() override { setResourceOverrideDirectory(std::nullopt); }

    void writePalette(const std::string& palette, const std::string& text,
                      const std::string& names = "") {
        std::filesystem::create_directories(folder_.file("palettes/" + palette + ".clr"));
        folder_.write("palettes/" + palette + ".clr/" + palette + ".clr", text);
        std::filesystem::create_directories(folder_.file("strings"));
        if (!names.empty())
            folder_.write("strings/" + palette + ".strings", names);
    }

    ScratchFolder folder_;
};

}  // namespace

TEST(ColorList, ParsesOnlyCompleteLinesAfterTheHeader) {
    const std::tuple<const char*, const char*, std::vector<std::string>> cases[] = {
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
    for (const auto& [behaviour, text, keys] : cases) {
        EXPECT_EQ(HMKColorList::fromText("P", text).allSortedKeys(), keys) << behaviour;
    }
    // A repeated key is listed each time and keeps its last colour.
    auto list =
        HMKColorList::fromText("P", "h\n1 0 0 0 1 a\n2,1,0.5,0.25,1,b\n3 0.5 0.5 0.5 1 a\n");
    EXPECT_THAT(list.allSortedKeys(), ElementsAre("a", "b", "a"));
    EXPECT_THAT(list.allKeys(), ElementsAre("a", "b"));
    EXPECT_EQ(*list.colorWithKey("a"), HMKColor(0.5, 0.5, 0.5));
    EXPECT_EQ(*list.colorWithKey("b"), HMKColor(1, 0.5, 0.25));
    EXPECT_FALSE(list.colorWithKey("c"));
}

TEST_F(PaletteTest, NamedPalettesAreParsedOnceAndNeverLeaveTheirFolder) {
    writePalette("Cached Rayon", "h\n1 0 0 0 1 k\n");
    auto first = HMKColorList::named("Cached Rayon");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->name(), "Cached Rayon");
    // Changing the file afterwards does not matter: the parsed palette is kept.
    writePalette("Cached Rayon", "h\n1 0 0 0 1 other\n");
    EXPECT_EQ(HMKColorList::named("Cached Rayon"), first);
    EXPECT_THAT(first->allSortedKeys(), ElementsAre("k"));
    EXPECT_EQ(HMKColorList::named("Not Installed"), nullptr);
    EXPECT_EQ(HMKColorList::named(""), nullptr);
    EXPECT_EQ(HMKColorList::named("../palettes/Cached Rayon.clr/Cached Rayon"), nullptr);
}

TEST_F(PaletteTest, ThreadFromKeyTakesColourAndNamesFromThePalette) {
    writePalette("Key Poly", "h\n1 0 0 1 1 405\n2 1 1 1 1 001\n",
                 "\"Key Poly\" = \"Key Polyester\";\n\"405\" = \"Blue\";\n");
    EXPECT_EQ(HMKThread::fromPaletteKey("405", "Key Poly"),
              HMKThread(HMKColor(0, 0, 1), "Blue", "405", "Key Poly", "Key Polyester"));
    EXPECT_EQ(HMKThread::fromPaletteKey("001", "Key Poly").name, "Unknown color");
    // An unknown key or palette gives a new grey thread that keeps key and palette.
    for (const auto& [key, palette] : {std::pair{"999", "Key Poly"}, {"405", "No Such Palette"}}) {
        EXPECT_EQ(HMKThread::fromPaletteKey(key, palette),
                  HMKThread(HMKColor(0.8, 0.8, 0.8), "Individual color (204, 204, 204)", key,
                            palette, ""))
            << palette;
    }
}

TEST_F(PaletteTest, ChangeToColorPicksTheNearestThreadByTheWeightedDistance) {
    const std::tuple<const char*, const char*, HMKColor, std::string> cases[] = {
        {"equally near threads: the first wins", "h\n1 0 0 0.2 1 first\n2 0 0 0.2 1 second\n",
         HMKColor(0, 0, 0), "first"},
        {"an exact colour is taken", "h\n1 0.9 0.9 0.9 1 near\n2 1 1 1 1 white\n3 0 0 0 1 k\n",
         HMKColor(1, 1, 1), "white"},
        {"green weighs more than red", "h\n1 0.3 0 0 1 reddish\n2 0 0.25 0 1 greenish\n",
         HMKColor(0, 0, 0), "reddish"},
        {"blue weighs about three", "h\n1 0 0 0.25 1 bluish\n2 0 0.217 0 1 greenish\n",
         HMKColor(0, 0, 0), "bluish"},
        {"green weighs four times, red a little over two",
         "h\n1 0.34 0 0 1 redder\n2 0 0.25 0 1 greenish\n", HMKColor(0, 0, 0), "greenish"},
        // The blue weight takes the signed red difference: with the mean red in its place
        // "violet" would be nearer.
        {"blue is weighted by the red difference",
         "h\n1 0.64 0 0.76 1 violet\n2 0.22 0 0.18 1 brown\n", HMKColor(0.91, 0, 0.1), "brown"},
        {"red weighs more among strong reds", "h\n1 0.8 0 0 1 darker\n2 1 0.17 0 1 orange\n",
         HMKColor(1, 0, 0), "orange"},
    };
    int palette = 0;
    for (const auto& [behaviour, text, target, key] : cases) {
        const std::string name = "Match " + std::to_string(palette++);
        writePalette(name, text,
                     "\"" + name + "\" = \"" + name + " 40\";\n\"" + key + "\" = \"Slate\";\n");
        HMKThread thread(HMKColor(), "t", "k", "", "");
        thread.length = 12;
        ASSERT_TRUE(thread.changeToColor(target, name)) << behaviour;
        HMKThread expected(*HMKColorList::named(name)->colorWithKey(key), "Slate", key, name,
                           name + " 40");
        expected.length = 12;
        EXPECT_EQ(thread, expected) << behaviour;
    }
}

TEST_F(PaletteTest, SpecialKeysAndEmptyOrMissingPalettes) {
    writePalette("Special", "h\n1 1 1 1 1 x9\n2 0.9 0.9 0.9 1 010\n");
    writePalette("Only Special", "h\n1 1 1 1 1 x9\n");
    writePalette("No Lines", "just a header\n");
    // Special keys are matched only from within their own palette.
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"Special", "Special", "x9"},
        {"Other", "Special", "010"},
        {"Other", "Only Special", ""},
        {"Other", "No Lines", ""}};
    for (const auto& [from, into, key] : cases) {
        HMKThread thread(HMKColor(1, 0, 0), "Red", "5", from, from);
        ASSERT_TRUE(thread.changeToColor(HMKColor(1, 1, 1), into));
        EXPECT_EQ(thread.key, key) << into;
        if (key.empty()) {  // no candidates: a grey thread without key
            EXPECT_EQ(thread, HMKThread(HMKColor(), "", "", into, "Threadcolors")) << into;
        }
    }
    // The empty palette makes an individual colour; a missing one is logged and changes nothing.
    HMKThread thread(HMKColor(), "t", "405", "Brother", "Brother");
    ASSERT_TRUE(thread.changeToColor(HMKColor(1, 0.5, 0.2), ""));
    EXPECT_EQ(thread, HMKThread(HMKColor(1, 0.5, 0.2), "Individual color (255, 128, 51)", "", "",
                                "Threadcolors"));
    std::vector<std::string> log;
    setDiagnosticSink([&](std::string_view line) { log.emplace_back(line); });
    EXPECT_FALSE(thread.changeToColor(HMKColor(1, 1, 1), "No Such Palette Anywhere"));
    setDiagnosticSink(nullptr);
    EXPECT_EQ(thread.color, HMKColor(1, 0.5, 0.2));
    ASSERT_EQ(log.size(), 1u);
    EXPECT_THAT(log[0], ::testing::HasSubstr("color palette not found"));
    // The design changes one thread and ignores bad indexes.
    HMKDesign design = makeDesign({stitch(1, 1), change(), stitch(1, 1)});
    EXPECT_TRUE(design.changeThread(1, HMKColor(1, 1, 1), "Special"));
    EXPECT_EQ(design.threads()[0], numberedThread(0));
    EXPECT_EQ(design.threads()[1].key, "010");
    EXPECT_FALSE(design.changeThread(2, HMKColor(), "Special"));
    EXPECT_FALSE(design.changeThread(-1, HMKColor(), "Special"));
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
    const std::tuple<HMKColor, std::string, std::string, std::string> matches[] = {
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
    for (const auto& [target, fromPalette, intoPalette, key] : matches) {
        HMKThread thread(HMKColor(), "t", "k", fromPalette, fromPalette);
        ASSERT_TRUE(thread.changeToColor(target, intoPalette));
        EXPECT_EQ(thread.key, key) << intoPalette << " from '" << fromPalette << "'";
    }
}

// The code tables of the Janome and Brother files, each code with the thread its key names in
// the shipped palette, against tests/golden/color-codes.txt.
TEST(ColorCodes, TablesMatchTheFilesCodes) {
    std::string text;
    for (const auto& [name, table, palette] :
         {std::tuple{"janome", HMKDesign::janomeColorCodes(), "Janome"},
          {"brother", HMKDesign::brotherColorCodes(), "Brother"},
          {"brother read", HMKDesign::brotherReadColorCodes(), "Brother"}}) {
        for (const auto& [index, key] : table) {
            const HMKThread thread = HMKThread::fromPaletteKey(key, palette);
            text += std::string(name) + " " + std::to_string(index) + " " + key + " " +
                    thread.paletteName + " " + thread.name + "\n";
        }
    }
    expectGolden(text, "color-codes.txt");
}
