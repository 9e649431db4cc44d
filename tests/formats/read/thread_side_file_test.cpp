#include <gtest/gtest.h>
#include <plist/plist.h>

#include <fstream>
#include <sstream>

#include "formats/read/read_test_files.h"
#include "model/design.h"

namespace {

HMKDesign designWithThreads(std::size_t count) {
    HMKDesign design;
    for (std::size_t i = 0; i < count; ++i) {
        design.threads().push_back(HMKThread(HMKColor(0.1 * double(i), 0.2, 0.3), "T",
                                             std::to_string(i), "Undefined", ""));
    }
    return design;
}

std::string readText(const std::filesystem::path& path) {
    std::ifstream stream(path);
    std::stringstream text;
    text << stream.rdbuf();
    return text.str();
}

// A keyed archive of a platform colour whose root object holds colourKey as ASCII data.
std::string archivedColor(const char* colorKey, std::string_view componentText) {
    plist_t colorObject = plist_new_dict();
    plist_dict_set_item(colorObject, "NSColorSpace", plist_new_uint(1));
    plist_dict_set_item(colorObject, colorKey,
                        plist_new_data(componentText.data(), componentText.size()));
    plist_dict_set_item(colorObject, "$class", plist_new_uid(2));
    plist_t classObject = plist_new_dict();
    plist_dict_set_item(classObject, "$classname", plist_new_string("NSColor"));
    plist_t objects = plist_new_array();
    plist_array_append_item(objects, plist_new_string("$null"));
    plist_array_append_item(objects, colorObject);
    plist_array_append_item(objects, classObject);
    plist_t top = plist_new_dict();
    plist_dict_set_item(top, "root", plist_new_uid(1));
    plist_t archive = plist_new_dict();
    plist_dict_set_item(archive, "$version", plist_new_uint(100000));
    plist_dict_set_item(archive, "$archiver", plist_new_string("NSKeyedArchiver"));
    plist_dict_set_item(archive, "$top", top);
    plist_dict_set_item(archive, "$objects", objects);
    char* binary = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(archive, &binary, &length);
    std::string bytes(binary, length);
    plist_to_bin_free(binary);
    plist_free(archive);
    return bytes;
}

// A version-1 side file: one dictionary per archived colour.
std::string versionOneSideFile(const std::vector<std::string>& archives) {
    plist_t root = plist_new_array();
    for (const auto& archive : archives) {
        plist_t entry = plist_new_dict();
        plist_dict_set_item(entry, "threadfileversion", plist_new_uint(1));
        plist_dict_set_item(entry, "name", plist_new_string("Old"));
        plist_dict_set_item(entry, "key", plist_new_string("7"));
        plist_dict_set_item(entry, "palette", plist_new_string("Sulky Rayon"));
        plist_dict_set_item(entry, "paletteName", plist_new_string("Sulky"));
        plist_dict_set_item(entry, "color", plist_new_data(archive.data(), archive.size()));
        plist_array_append_item(root, entry);
    }
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root, &xml, &length);
    std::string text(xml, length);
    plist_to_xml_free(xml);
    plist_free(root);
    return text;
}

}  // namespace

TEST(ThreadSideFile, LiesBesideTheDesignWithTheThreadsExtension) {
    ScratchFolder folder;
    designWithThreads(1).exportThreadsForDesign(folder.file("rose.dst"));
    EXPECT_TRUE(std::filesystem::exists(folder.file("rose.threads")));
}

TEST(ThreadSideFile, RoundTripKeepsEveryFieldAtSinglePrecision) {
    ScratchFolder folder;
    HMKDesign source;
    source.threads() = {
        HMKThread(HMKColor(0.1, 0.2, 1.0 / 3.0), "Sky & <Sea>", "1042", "Madeira Rayon", "Madeira"),
        HMKThread(HMKColor(1, 0, 0), "", "", "", "Threadcolors")};
    EXPECT_TRUE(source.exportThreadsForDesign(folder.file("rose.dst")));

    HMKDesign design = designWithThreads(2);
    ASSERT_TRUE(design.importThreadsForDesign(folder.file("rose.dst")));
    ASSERT_EQ(design.threads().size(), 2u);
    const HMKThread& first = design.threads()[0];
    EXPECT_EQ(first.name, "Sky & <Sea>");
    EXPECT_EQ(first.key, "1042");
    EXPECT_EQ(first.palette, "Madeira Rayon");
    EXPECT_EQ(first.paletteName, "Madeira");
    EXPECT_EQ(first.color.red(), double(0.1f));
    EXPECT_EQ(first.color.green(), double(0.2f));
    EXPECT_EQ(first.color.blue(), double(float(1.0 / 3.0)));
    EXPECT_EQ(first.tension, 13);
    EXPECT_EQ(design.threads()[1].color, HMKColor(1, 0, 0));
    EXPECT_EQ(design.threads()[1].paletteName, "Threadcolors");
}

TEST(ThreadSideFile, WritesVersionTwoKeysInOrder) {
    ScratchFolder folder;
    designWithThreads(1).exportThreadsForDesign(folder.file("rose.dst"));
    const std::string text = readText(folder.file("rose.threads"));
    std::size_t last = 0;
    for (const char* key :
         {"<key>threadfileversion</key>", "<integer>2</integer>", "<key>name</key>",
          "<key>key</key>", "<key>palette</key>", "<key>paletteName</key>", "<key>red</key>",
          "<key>green</key>", "<key>blue</key>"}) {
        const std::size_t at = text.find(key);
        ASSERT_NE(at, std::string::npos) << key;
        EXPECT_GT(at, last) << key;
        last = at;
    }
}

TEST(ThreadSideFile, DesignWithoutThreadsWritesAnEmptyArray) {
    ScratchFolder folder;
    HMKDesign().exportThreadsForDesign(folder.file("rose.dst"));
    HMKDesign design;
    EXPECT_TRUE(design.importThreadsForDesign(folder.file("rose.dst")));
}

TEST(ThreadSideFile, FailedWriteIsNotReported) {
    EXPECT_TRUE(designWithThreads(1).exportThreadsForDesign("/nonexistent/folder/rose.dst"));
}

TEST(ThreadSideFile, MismatchedCountIsIgnored) {
    ScratchFolder folder;
    designWithThreads(3).exportThreadsForDesign(folder.file("rose.dst"));
    HMKDesign design = designWithThreads(4);
    const auto before = design.threads();
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    EXPECT_EQ(design.threads(), before);
}

TEST(ThreadSideFile, MissingOrMalformedFileIsIgnored) {
    ScratchFolder folder;
    HMKDesign design = designWithThreads(1);
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    folder.write("rose.threads", "not a property list");
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    folder.write("rose.threads", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict/></plist>");
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    folder.write("rose.threads",
                 "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><string>x</string>"
                 "</array></plist>");
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    EXPECT_EQ(design.threads().size(), 1u);
    EXPECT_EQ(design.threads()[0].key, "0");
}

TEST(ThreadSideFile, VersionOneArchivedColoursAreDecoded) {
    struct Case {
        const char* key;
        std::string_view text;
        HMKColor color;
    };
    const Case cases[] = {
        {"NSRGB", std::string_view("0.25 0.5 0.75\0", 14), HMKColor(0.25, 0.5, 0.75)},
        {"NSComponents", "1 0 0.5 1", HMKColor(1, 0, 0.5)},
        {"NSWhite", std::string_view("0.5\0", 4), HMKColor(0.5, 0.5, 0.5)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.key);
        ScratchFolder folder;
        folder.write("rose.threads", versionOneSideFile({archivedColor(c.key, c.text)}));
        HMKDesign design = designWithThreads(1);
        ASSERT_TRUE(design.importThreadsForDesign(folder.file("rose.dst")));
        const HMKThread& thread = design.threads()[0];
        EXPECT_EQ(thread.color, c.color);
        EXPECT_EQ(thread.name, "Old");
        EXPECT_EQ(thread.key, "7");
        EXPECT_EQ(thread.palette, "Sulky Rayon");
        EXPECT_EQ(thread.paletteName, "Sulky");
    }
}

TEST(ThreadSideFile, VersionOneIsRewrittenAsVersionTwo) {
    ScratchFolder folder;
    folder.write("rose.threads", versionOneSideFile({archivedColor("NSRGB", "0 1 0")}));
    HMKDesign design = designWithThreads(1);
    ASSERT_TRUE(design.importThreadsForDesign(folder.file("rose.dst")));
    design.exportThreadsForDesign(folder.file("rose.dst"));
    const std::string text = readText(folder.file("rose.threads"));
    EXPECT_NE(text.find("<integer>2</integer>"), std::string::npos);
    EXPECT_EQ(text.find("<key>color</key>"), std::string::npos);
}

TEST(ThreadSideFile, UndecodableArchivedColourMakesTheFileUnreadable) {
    ScratchFolder folder;
    folder.write("rose.threads", versionOneSideFile({archivedColor("NSCatalogName", "System")}));
    HMKDesign design = designWithThreads(1);
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    folder.write("rose.threads", versionOneSideFile({"not an archive"}));
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
}

TEST(ThreadSideFile, DeleteRemovesAnExistingFileAndAcceptsAMissingOne) {
    ScratchFolder folder;
    const auto design = designWithThreads(1);
    EXPECT_TRUE(design.deleteThreadsFromDesign(folder.file("rose.dst")));
    design.exportThreadsForDesign(folder.file("rose.dst"));
    EXPECT_TRUE(design.deleteThreadsFromDesign(folder.file("rose.dst")));
    EXPECT_FALSE(std::filesystem::exists(folder.file("rose.threads")));
}
