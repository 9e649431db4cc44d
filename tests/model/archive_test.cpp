#include "model/archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cerrno>
#include <map>
#include <random>

#include "support/test_support.h"

namespace {

namespace fs = std::filesystem;

// A design with count random stitches (every flag combination, negative zero, fractions),
// three threads with colours that single precision holds exactly, a hoop and a location.
HMKDesign randomDesign(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> delta(-1200.0f, 1200.0f);
    HMKDesign design;
    std::vector<HMKStitch> stitches;
    for (std::size_t i = 0; i < count; ++i) {
        float dx = i % 97 == 0 ? -0.0f : delta(random);
        HMKStitch stitch(dx, delta(random), random() % 2, random() % 50 == 0);
        stitch.isSelected = random() % 3 == 0;
        stitches.push_back(stitch);
    }
    design.setStitches(std::move(stitches));
    HMKThread first(HMKColor(0.5, 0.25, 1), "Weiß & Grün", "1001", "Madeira Rayon",
                    "Madeira Rayon");
    first.length = 1234.5f;
    first.tension = -7;
    HMKThread second(HMKColor(0, 0.125, 0.75), "Navy", "405", "Brother", "Brother");
    second.isShown = false;
    HMKThread third(HMKColor(0.75, 0.5, 0.25), "", "", "", "");
    third.tension = 0;
    design.setThreads({first, second, third});
    design.setDesignName("Rose \"Gold\" 🌹");
    design.setDesignType("PES");
    design.setDesignVersion(60);
    design.setDesignLocation("/home/ann/Stickmuster/Rose 100%.pes");
    design.setDesignHoop(HMKDesign::hoops()[5]);
    design.recomputeBounds();
    design.setUseThreadFile(true);
    design.setSelectionActive(true);
    design.setDisplayRange({0, count});
    return design;
}

// Everything archived is decoded bit for bit.
void expectSameDesign(const HMKDesign& decoded, const HMKDesign& original) {
    EXPECT_TRUE(sameDesign(decoded, original));
    EXPECT_EQ(
        std::tuple(decoded.designName(), decoded.designType(), decoded.designVersion(),
                   decoded.designLocation(), decoded.useThreadFile(), decoded.designHoop(),
                   decoded.hoopCode(), decoded.designHoop() && decoded.designHoop()->isWritable()),
        std::tuple(original.designName(), original.designType(), original.designVersion(),
                   original.designLocation(), original.useThreadFile(), original.designHoop(),
                   original.hoopCode(),
                   original.designHoop() && original.designHoop()->isWritable()));
}

// Builds keyed archives object by object with the property-list library, the way another
// writer would, so the decoder is checked against data it did not write itself.
class ForeignArchive {
public:
    using Keys = std::vector<std::pair<std::string, plist_t>>;
    ForeignArchive() { add(plist_new_string("$null")); }
    ~ForeignArchive() { plist_free(objects_); }

    std::uint64_t add(plist_t object) {
        plist_array_append_item(objects_, object);
        return plist_array_get_size(objects_) - 1;
    }
    // The object number the next add gets.
    std::uint64_t next() const { return plist_array_get_size(objects_); }
    std::uint64_t object(const std::string& className, const Keys& keys) {
        plist_t dict = plist_new_dict();
        plist_dict_set_item(dict, "$class", plist_new_uid(classUid(className)));
        for (const auto& [key, value] : keys)
            plist_dict_set_item(dict, key.c_str(), value);
        return add(dict);
    }
    std::uint64_t list(const std::vector<std::uint64_t>& uids, const char* className = "NSArray") {
        plist_t items = plist_new_array();
        for (std::uint64_t uid : uids)
            plist_array_append_item(items, plist_new_uid(uid));
        return object(className, {{"NS.objects", items}});
    }
    // The archive of a design object holding just these keys.
    std::vector<std::uint8_t> design(const Keys& keys) { return bytes(object("HMKDesign", keys)); }
    std::vector<std::uint8_t> bytes(std::uint64_t root, const char* archiver = "NSKeyedArchiver") {
        plist_t frame = plist_new_dict(), top = plist_new_dict();
        plist_dict_set_item(frame, "$archiver", plist_new_string(archiver));
        plist_dict_set_item(frame, "$version", plist_new_uint(100000));
        plist_dict_set_item(top, "root", plist_new_uid(root));
        plist_dict_set_item(frame, "$top", top);
        plist_dict_set_item(frame, "$objects", plist_copy(objects_));
        char* data = nullptr;
        std::uint32_t length = 0;
        plist_to_bin(frame, &data, &length);
        std::vector<std::uint8_t> bytes(data, data + length);
        plist_to_bin_free(data);
        plist_free(frame);
        return bytes;
    }

private:
    std::uint64_t classUid(const std::string& name) {
        if (!classes_.contains(name)) {
            plist_t ancestry = plist_new_array();
            plist_array_append_item(ancestry, plist_new_string(name.c_str()));
            plist_array_append_item(ancestry, plist_new_string("NSObject"));
            plist_t description = plist_new_dict();
            plist_dict_set_item(description, "$classname", plist_new_string(name.c_str()));
            plist_dict_set_item(description, "$classes", ancestry);
            classes_[name] = add(description);
        }
        return classes_[name];
    }

    plist_t objects_ = plist_new_array();
    std::map<std::string, std::uint64_t> classes_;
};

plist_t uid(std::uint64_t number) {
    return plist_new_uid(number);
}

HMKDesign roundTrip(const HMKDesign& design) {
    auto decoded = unarchiveDesign(archiveDesign(design));
    EXPECT_TRUE(decoded);
    return decoded.value_or(HMKDesign());
}

TEST(Archive, RoundTripKeepsEveryFieldBitForBit) {
    for (unsigned seed : {1u, 2u, 3u}) {
        SCOPED_TRACE(seed);
        HMKDesign design = randomDesign(3000 + seed * 1000, seed);
        expectSameDesign(roundTrip(design), design);
    }
    // Empty: no hoop, no location, the empty bounds.
    HMKDesign empty;
    empty.resetBounds();
    expectSameDesign(roundTrip(empty), empty);
    // Colours are stored at single precision, and every record is displayed.
    HMKDesign design = randomDesign(40, 9);
    design.threads()[0].color = HMKColor(0.1, 0.2, 0.3);
    design.setDisplayRange({3, 5});
    const HMKDesign decoded = roundTrip(design);
    EXPECT_EQ(decoded.threads()[0].color.red(), static_cast<double>(0.1f));
    EXPECT_EQ(decoded.displayRange(), (HMKRange{0, 40}));
    // Locations of every kind, and names that are not UTF-8 (kept as Latin-1 text).
    for (const char* location : {"designs/a b.dst", "/tmp/x#y?.jef", "/", "relative%41.pes"}) {
        HMKDesign located;
        located.setDesignLocation(location);
        EXPECT_EQ(roundTrip(located).designLocation(), fs::path(location));
    }
    HMKDesign named;
    named.setDesignName("Caf\xE9 \xFFz\xA9 \xF0\x90\x80\x80");
    EXPECT_EQ(roundTrip(named).designName(), "Café ÿz© \xF0\x90\x80\x80");
}

// The archive as another reader of keyed archives sees it: classes, keys in their order and
// value types, against tests/golden/archive.xml.
TEST(Archive, IsAKeyedArchiverBinaryPropertyList) {
    HMKDesign design = makeDesign({jump(1.5f, -2), selected(stitch(3, 4))},
                                  {makeThread("405", "Brother", HMKColor(0.5, 0.25, 1))});
    design.setDesignName("Rose.pes");
    design.setDesignType("PES");
    design.setDesignVersion(10);
    design.setDesignLocation("/home/ann/Zoo 9z.pes");  // some characters are escaped
    design.setHoopFromVendor("Janome", 4);
    const std::vector<std::uint8_t> bytes = archiveDesign(design);
    plist_t root = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::uint32_t>(bytes.size()), &root);
    ASSERT_NE(root, nullptr);
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root, &xml, &length);
    expectGolden(std::string_view(xml, length), "archive.xml");
    plist_to_xml_free(xml);
    plist_free(root);
}

// What the decoder makes of a foreign archive, against tests/golden/archive-foreign.txt.
TEST(Archive, ReadsForeignArchivesWithMissingKeysBaseUrlsAndMutableStrings) {
    ForeignArchive archive;
    const auto stitch =
        archive.object("HMKStitch", {{"HMKEmbroideryStitchDeltaY", plist_new_real(2.5)}});
    const auto green = archive.object("HMKColor", {{"HMKColorGreen", plist_new_real(0.5)}});
    const auto gold = archive.object(
        "HMKThread", {{"HMKThreadColor", uid(green)},
                      {"HMKThreadName", uid(archive.add(plist_new_string("Gold")))}});
    const auto base = archive.object(
        "NSURL", {{"NS.base", uid(0)},
                  {"NS.relative", uid(archive.add(plist_new_string("file:///Users/ann/")))}});
    const auto location = archive.object(
        "NSURL", {{"NS.base", uid(base)},
                  {"NS.relative", uid(archive.add(plist_new_string("My%20Rose%2a.dst")))}});
    const auto name = archive.object("NSMutableString", {{"NS.string", plist_new_string("Rose")}});
    const auto decoded = unarchiveDesign(archive.design(
        {{"HMKEmbroiderDesignStitches", uid(archive.list({stitch, stitch}))},
         {"HMKEmbroiderDesignThreads",
          uid(archive.list({gold, archive.object("HMKThread", {})}, "NSMutableArray"))},
         {"HMKEmbroiderDesignHoop", uid(0)},
         {"HMKEmbroiderDesignLocation", uid(location)},
         {"HMKEmbroiderDesignName", uid(name)}}));
    // Missing keys decode as zero, no and nil.
    ASSERT_TRUE(decoded);
    expectGolden(describe(*decoded), "archive-foreign.txt");
}

TEST(Archive, RejectsForeignAndMalformedObjectGraphs) {
    using Build = std::vector<std::uint8_t> (*)(ForeignArchive&);
    const std::tuple<const char*, const char*, Build> cases[] = {
        {"a root of another class", "is not of class HMKDesign",
         [](ForeignArchive& a) { return a.bytes(a.object("HMKThread", {})); }},
        {"another archiver", "not a keyed archive",
         [](ForeignArchive& a) { return a.bytes(a.object("HMKDesign", {}), "NSArchiver"); }},
        {"a root UID past the objects", "points at object 999",
         [](ForeignArchive& a) { return a.bytes(999); }},
        {"a stitch UID past the objects", "points at object 12345",
         [](ForeignArchive& a) {
             return a.design({{"HMKEmbroiderDesignStitches", uid(a.list({12345}))}});
         }},
        {"a thread UID past the objects", "points at object 777",
         [](ForeignArchive& a) {
             return a.design({{"HMKEmbroiderDesignThreads", uid(a.list({777}))}});
         }},
        {"a list of another class", "is not a list",
         [](ForeignArchive& a) {
             return a.design({{"HMKEmbroiderDesignThreads", uid(a.list({}, "NSURL"))}});
         }},
        {"a URL that is its own base", "contains itself",
         [](ForeignArchive& a) {
             a.object("NSURL", {});
             return a.design({{"HMKEmbroiderDesignLocation",
                               uid(a.object("NSURL", {{"NS.base", uid(a.next())}}))}});
         }},
        {"base URLs nested ten deep", "nest too deeply",
         [](ForeignArchive& a) {
             std::uint64_t url = 0;
             for (int depth = 0; depth < 10; ++depth)
                 url = a.object("NSURL", {{"NS.base", uid(url)},
                                          {"NS.relative", uid(a.add(plist_new_string("a/")))}});
             return a.design({{"HMKEmbroiderDesignLocation", uid(url)}});
         }},
        {"a list that holds itself", "contains itself",
         [](ForeignArchive& a) {
             a.list({});
             return a.design({{"HMKEmbroiderDesignThreads", uid(a.list({a.next()}))}});
         }},
        {"a string where a number belongs", "is not a number",
         [](ForeignArchive& a) {
             return a.design({{"HMKEmbroiderDesignXMin", plist_new_string("wide")}});
         }},
        {"a version beyond 32 bits", "out of range",
         [](ForeignArchive& a) {
             return a.design({{"HMKEmbroiderDesignVersion", plist_new_uint(1ull << 40)}});
         }},
        {"a stitch with hundreds of keys", "too many keys",
         [](ForeignArchive& a) {
             ForeignArchive::Keys keys;
             for (int i = 0; i < 300; ++i)
                 keys.emplace_back("extra" + std::to_string(i), plist_new_bool(1));
             return a.design(
                 {{"HMKEmbroiderDesignStitches", uid(a.list({a.object("HMKStitch", keys)}))}});
         }},
        {"one long-named thread listed thousands of times", "expands far beyond",
         [](ForeignArchive& a) {
             const auto name = a.add(plist_new_string(std::string(100'000, 'n').c_str()));
             const auto thread = a.object("HMKThread", {{"HMKThreadName", uid(name)}});
             return a.design(
                 {{"HMKEmbroiderDesignThreads", uid(a.list(std::vector(10'000, thread)))}});
         }},
        {"a plain value where an object reference belongs", "where a reference belongs",
         [](ForeignArchive& a) {
             return a.design({{"HMKEmbroiderDesignName", plist_new_string("Rose")}});
         }},
    };
    for (const auto& [behaviour, reason, build] : cases) {
        HMKError error;
        ForeignArchive archive;
        EXPECT_FALSE(unarchiveDesign(build(archive), &error)) << behaviour;
        EXPECT_EQ(error.domain, kHMKArchiveErrorDomain) << behaviour;
        EXPECT_EQ(error.code, kHMKArchiveDamaged) << behaviour;
        EXPECT_THAT(error.failureReason, ::testing::HasSubstr(reason)) << behaviour;
        EXPECT_FALSE(error.message().empty()) << behaviour;
    }
}

TEST(Archive, RejectsDataThatIsNoBinaryPropertyList) {
    const std::vector<std::string> inputs = {"", "hello", "bplist00",
                                             std::string("bplist00") + std::string(32, '\0'),
                                             "<?xml version=\"1.0\"?><plist><dict/></plist>"};
    for (const std::string& input : inputs) {
        HMKError error;
        std::vector<std::uint8_t> bytes(input.begin(), input.end());
        EXPECT_FALSE(unarchiveDesign(bytes, &error)) << input;
        EXPECT_EQ(error.code, kHMKArchiveNotAnArchive) << input;
    }
    EXPECT_FALSE(unarchiveDesign(std::vector<std::uint8_t>{}));
}

TEST(Archive, TruncatedOrCorruptedArchivesNeverCrash) {
    const std::vector<std::uint8_t> bytes = archiveDesign(randomDesign(20, 5));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        EXPECT_FALSE(unarchiveDesign(std::span(bytes).first(length))) << length;
    }
    // Every single-byte change either still decodes or is refused; none may crash.
    std::size_t refused = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        for (std::uint8_t flip : {0x01, 0x80, 0xFF}) {
            std::vector<std::uint8_t> damaged = bytes;
            damaged[i] ^= flip;
            refused += !unarchiveDesign(damaged).has_value();
        }
    }
    EXPECT_GT(refused, 0u);
}

TEST(ArchiveFile, WritesAndReadsADesignFile) {
    ScratchFolder folder;
    HMKDesign design = randomDesign(500, 6);
    ASSERT_TRUE(writeDesignArchive(folder.file("Rose.hemlark"), design));
    auto decoded = readDesignArchive(folder.file("Rose.hemlark"));
    ASSERT_TRUE(decoded);
    expectSameDesign(*decoded, design);

    HMKError error;
    EXPECT_FALSE(readDesignArchive(folder.file("missing.hemlark"), &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_FALSE(writeDesignArchive(folder.file("no-such-folder/x.hemlark"), design, &error));
    EXPECT_EQ(error.code, ENOENT);
}

}  // namespace
