#include <plist/plist.h>

#include "support/test_support.h"

namespace {

HMKDesign designWithThreads(std::size_t count) {
    HMKDesign design;
    for (std::size_t i = 0; i < count; ++i)
        design.threads().push_back(HMKThread(HMKColor(0.1 * double(i), 0.2, 0.3), "T",
                                             std::to_string(i), "Undefined", ""));
    return design;
}

plist_t dict(std::initializer_list<std::pair<const char*, plist_t>> items) {
    plist_t dict = plist_new_dict();
    for (const auto& [key, value] : items)
        plist_dict_set_item(dict, key, value);
    return dict;
}

template <typename Serialise, typename Release>
std::string serialised(plist_t root, Serialise serialise, Release release) {
    char* text = nullptr;
    std::uint32_t length = 0;
    serialise(root, &text, &length);
    std::string result(text, length);
    release(text);
    plist_free(root);
    return result;
}

// A keyed archive of a platform colour whose root object holds colourKey as ASCII data.
std::string archivedColor(const char* colorKey, std::string_view componentText) {
    plist_t objects = plist_new_array();
    plist_array_append_item(objects, plist_new_string("$null"));
    plist_array_append_item(
        objects, dict({{"NSColorSpace", plist_new_uint(1)},
                       {colorKey, plist_new_data(componentText.data(), componentText.size())},
                       {"$class", plist_new_uid(2)}}));
    plist_array_append_item(objects, dict({{"$classname", plist_new_string("NSColor")}}));
    return serialised(dict({{"$version", plist_new_uint(100000)},
                            {"$archiver", plist_new_string("NSKeyedArchiver")},
                            {"$top", dict({{"root", plist_new_uid(1)}})},
                            {"$objects", objects}}),
                      plist_to_bin, plist_to_bin_free);
}

// A version-1 side file: one dictionary with the archived colour.
std::string versionOneSideFile(const std::string& archive) {
    plist_t root = plist_new_array();
    plist_array_append_item(root,
                            dict({{"threadfileversion", plist_new_uint(1)},
                                  {"name", plist_new_string("Old")},
                                  {"key", plist_new_string("7")},
                                  {"palette", plist_new_string("Sulky Rayon")},
                                  {"paletteName", plist_new_string("Sulky")},
                                  {"color", plist_new_data(archive.data(), archive.size())}}));
    return serialised(root, plist_to_xml, plist_to_xml_free);
}

}  // namespace

TEST(ThreadSideFile, RoundTripKeepsEveryFieldAtSinglePrecisionAsTheGoldenFileRecords) {
    ScratchFolder folder;
    HMKDesign source;
    source.threads() = {
        HMKThread(HMKColor(0.1, 0.2, 1.0 / 3.0), "Sky & <Sea>", "1042", "Madeira Rayon", "Madeira"),
        HMKThread(HMKColor(1, 0, 0), "", "", "", "Threadcolors")};
    source.threads()[0].tension = 7;  // not kept
    EXPECT_TRUE(source.exportThreadsForDesign(folder.file("rose.dst")));

    HMKDesign design = designWithThreads(2);
    ASSERT_TRUE(design.importThreadsForDesign(folder.file("rose.dst")));
    EXPECT_EQ(design.threads(),
              (std::vector{HMKThread(HMKColor(double(0.1f), double(0.2f), double(float(1.0 / 3.0))),
                                     "Sky & <Sea>", "1042", "Madeira Rayon", "Madeira"),
                           HMKThread(HMKColor(1, 0, 0), "", "", "", "Threadcolors")}));
    // Beside the design, version 2, keys in their order.
    const Bytes text = folder.read("rose.threads");
    expectGolden(std::string(text.begin(), text.end()), "rose.threads");
}

TEST(ThreadSideFile, MissingMalformedOrMismatchedFilesAreIgnored) {
    ScratchFolder folder;
    HMKDesign design = designWithThreads(1);
    const auto before = design.threads();
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    for (const std::string& text :
         {std::string("not a property list"),
          std::string("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict/></plist>"),
          std::string("<?xml version=\"1.0\"?><plist "
                      "version=\"1.0\"><array><string>x</string></array></plist>"),
          // Version 1 with a colour that cannot be decoded, or no archive at all.
          versionOneSideFile(archivedColor("NSCatalogName", "System")),
          versionOneSideFile("not an archive")}) {
        folder.write("rose.threads", text);
        EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst"))) << text;
    }
    designWithThreads(2).exportThreadsForDesign(folder.file("rose.dst"));
    EXPECT_FALSE(design.importThreadsForDesign(folder.file("rose.dst")));
    EXPECT_EQ(design.threads(), before);
    // A design without threads writes an empty array, which matches it; failed writes are
    // not reported.
    HMKDesign().exportThreadsForDesign(folder.file("rose.dst"));
    EXPECT_TRUE(HMKDesign().importThreadsForDesign(folder.file("rose.dst")));
    EXPECT_TRUE(design.exportThreadsForDesign("/nonexistent/folder/rose.dst"));
}

TEST(ThreadSideFile, VersionOneArchivedColoursAreDecodedAndRewrittenAsVersionTwo) {
    const std::tuple<const char*, std::string_view, HMKColor> cases[] = {
        {"NSRGB", std::string_view("0.25 0.5 0.75\0", 14), HMKColor(0.25, 0.5, 0.75)},
        {"NSComponents", "1 0 0.5 1", HMKColor(1, 0, 0.5)},
        {"NSWhite", std::string_view("0.5\0", 4), HMKColor(0.5, 0.5, 0.5)},
    };
    for (const auto& [key, text, color] : cases) {
        SCOPED_TRACE(key);
        ScratchFolder folder;
        folder.write("rose.threads", versionOneSideFile(archivedColor(key, text)));
        HMKDesign design = designWithThreads(1);
        ASSERT_TRUE(design.importThreadsForDesign(folder.file("rose.dst")));
        EXPECT_EQ(design.threads()[0], HMKThread(color, "Old", "7", "Sulky Rayon", "Sulky"));
        design.exportThreadsForDesign(folder.file("rose.dst"));
        const auto rewritten = folder.read("rose.threads");
        EXPECT_EQ(std::string(rewritten.begin(), rewritten.end()).find("<key>color</key>"),
                  std::string::npos);
    }
}

TEST(ThreadSideFile, DeleteRemovesAnExistingFileAndAcceptsAMissingOne) {
    ScratchFolder folder;
    const auto design = designWithThreads(1);
    EXPECT_TRUE(design.deleteThreadsFromDesign(folder.file("rose.dst")));
    design.exportThreadsForDesign(folder.file("rose.dst"));
    EXPECT_TRUE(design.deleteThreadsFromDesign(folder.file("rose.dst")));
    EXPECT_FALSE(std::filesystem::exists(folder.file("rose.threads")));
}
