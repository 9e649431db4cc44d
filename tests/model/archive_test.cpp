#include "model/archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <bit>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

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
    HMKThread third(HMKColor(), "", "", "", "");
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
    return design;
}

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

void expectSameDesign(const HMKDesign& decoded, const HMKDesign& original) {
    ASSERT_EQ(decoded.stitches().size(), original.stitches().size());
    for (std::size_t i = 0; i < original.stitches().size(); ++i) {
        const HMKStitch& a = decoded.stitches()[i];
        const HMKStitch& b = original.stitches()[i];
        ASSERT_EQ(bits(a.deltaX), bits(b.deltaX)) << "stitch " << i;
        ASSERT_EQ(bits(a.deltaY), bits(b.deltaY)) << "stitch " << i;
        ASSERT_EQ(a, b) << "stitch " << i;
    }
    // Colours are kept at single precision.
    std::vector<HMKThread> threads = original.threads();
    for (HMKThread& thread : threads) {
        thread.color = HMKColor(static_cast<float>(thread.color.red()),
                                static_cast<float>(thread.color.green()),
                                static_cast<float>(thread.color.blue()));
    }
    EXPECT_EQ(decoded.threads(), threads);
    EXPECT_EQ(decoded.designName(), original.designName());
    EXPECT_EQ(decoded.designType(), original.designType());
    EXPECT_EQ(decoded.designVersion(), original.designVersion());
    EXPECT_EQ(decoded.designLocation(), original.designLocation());
    ASSERT_EQ(decoded.designHoop().has_value(), original.designHoop().has_value());
    if (const auto& hoop = original.designHoop()) {
        const HMKHoop& a = *decoded.designHoop();
        EXPECT_EQ(std::tuple(a, a.code(), a.isMultiHoop(), a.isRounded(), a.isWritable()),
                  std::tuple(*hoop, hoop->code(), hoop->isMultiHoop(), hoop->isRounded(),
                             hoop->isWritable()));
    }
    for (auto bound : {&HMKDesign::xMin, &HMKDesign::xMax, &HMKDesign::yMin, &HMKDesign::yMax}) {
        EXPECT_EQ(bits((decoded.*bound)()), bits((original.*bound)()));
    }
    EXPECT_EQ(decoded.useThreadFile(), original.useThreadFile());
    EXPECT_EQ(decoded.selectionActive(), original.selectionActive());
}

// Builds keyed archives object by object with the property-list library, the way another
// writer would, so the decoder is checked against data it did not write itself.
class ForeignArchive {
public:
    ForeignArchive() : objects_(plist_new_array()) { add(plist_new_string("$null")); }
    ~ForeignArchive() { plist_free(objects_); }

    std::uint64_t add(plist_t object) {
        plist_array_append_item(objects_, object);
        return plist_array_get_size(objects_) - 1;
    }
    std::uint64_t addString(const char* text) { return add(plist_new_string(text)); }
    // A new object of the class; the caller fills its keys before adding it.
    plist_t object(const std::string& className) {
        plist_t dict = plist_new_dict();
        plist_dict_set_item(dict, "$class", plist_new_uid(classUid(className)));
        return dict;
    }
    std::uint64_t list(const std::vector<std::uint64_t>& uids, const char* className = "NSArray") {
        plist_t items = plist_new_array();
        for (std::uint64_t uid : uids) {
            plist_array_append_item(items, plist_new_uid(uid));
        }
        plist_t dict = object(className);
        plist_dict_set_item(dict, "NS.objects", items);
        return add(dict);
    }
    static void set(plist_t dict, const char* key, plist_t value) {
        plist_dict_set_item(dict, key, value);
    }
    // The archive of a design object holding just these keys.
    std::vector<std::uint8_t> designWith(std::vector<std::pair<const char*, plist_t>> keys) {
        plist_t design = object("HMKDesign");
        for (auto [key, value] : keys) {
            set(design, key, value);
        }
        return bytes(add(design));
    }

    std::vector<std::uint8_t> bytes(std::uint64_t root, const char* archiver = "NSKeyedArchiver") {
        plist_t frame = plist_new_dict();
        plist_dict_set_item(frame, "$archiver", plist_new_string(archiver));
        plist_dict_set_item(frame, "$version", plist_new_uint(100000));
        plist_t top = plist_new_dict();
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
        auto found = classes_.find(name);
        if (found != classes_.end()) {
            return found->second;
        }
        plist_t description = plist_new_dict();
        plist_dict_set_item(description, "$classname", plist_new_string(name.c_str()));
        plist_t ancestry = plist_new_array();
        plist_array_append_item(ancestry, plist_new_string(name.c_str()));
        plist_array_append_item(ancestry, plist_new_string("NSObject"));
        plist_dict_set_item(description, "$classes", ancestry);
        return classes_[name] = add(description);
    }

    plist_t objects_;
    std::map<std::string, std::uint64_t> classes_;
};

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
}

TEST(Archive, EmptyDesignKeepsNoHoopNoLocationAndTheEmptyBounds) {
    HMKDesign design;
    design.resetBounds();
    HMKDesign decoded = roundTrip(design);
    expectSameDesign(decoded, design);
    EXPECT_EQ(decoded.xMin(), kEmptyBoundsMin);
    EXPECT_EQ(decoded.displayRange(), (HMKRange{0, 0}));
}

TEST(Archive, ColoursAreStoredAtSinglePrecisionAndAllRecordsAreDisplayed) {
    HMKDesign design = randomDesign(40, 9);
    design.threads()[0].color = HMKColor(0.1, 0.2, 0.3);
    design.setDisplayRange({3, 5});
    HMKDesign decoded = roundTrip(design);
    EXPECT_EQ(decoded.threads()[0].color.red(), static_cast<double>(0.1f));
    EXPECT_NE(decoded.threads()[0].color.red(), 0.1);
    EXPECT_EQ(decoded.displayRange(), (HMKRange{0, 40}));
}

TEST(Archive, RelativeAndPlainLocationsRoundTrip) {
    for (const char* location : {"designs/a b.dst", "/tmp/x#y?.jef", "/", "relative%41.pes"}) {
        HMKDesign design;
        design.setDesignLocation(location);
        HMKDesign decoded = roundTrip(design);
        EXPECT_EQ(decoded.designLocation(), fs::path(location));
    }
}

TEST(Archive, NamesThatAreNotUtf8AreKeptAsLatin1Text) {
    HMKDesign design;
    design.setDesignName("Caf\xE9 \xFF");
    HMKDesign decoded = roundTrip(design);
    EXPECT_EQ(decoded.designName(), "Café ÿ");
}

TEST(Archive, IsAKeyedArchiverBinaryPropertyList) {
    HMKDesign design = randomDesign(3, 4);
    std::vector<std::uint8_t> bytes = archiveDesign(design);
    ASSERT_GT(bytes.size(), 8u);
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), "bplist00");

    plist_t root = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::uint32_t>(bytes.size()), &root);
    ASSERT_NE(root, nullptr);
    auto string = [](plist_t node) {
        char* text = nullptr;
        plist_get_string_val(node, &text);
        std::string value = text ? text : "";
        free(text);
        return value;
    };
    auto uid = [](plist_t node) {
        std::uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return value;
    };
    EXPECT_EQ(string(plist_dict_get_item(root, "$archiver")), "NSKeyedArchiver");
    std::uint64_t version = 0;
    plist_get_uint_val(plist_dict_get_item(root, "$version"), &version);
    EXPECT_EQ(version, 100000u);
    plist_t objects = plist_dict_get_item(root, "$objects");
    EXPECT_EQ(string(plist_array_get_item(objects, 0)), "$null");
    std::uint64_t rootUid = uid(plist_dict_get_item(plist_dict_get_item(root, "$top"), "root"));
    plist_t designObject = plist_array_get_item(objects, static_cast<std::uint32_t>(rootUid));
    plist_t designClass = plist_array_get_item(
        objects, static_cast<std::uint32_t>(uid(plist_dict_get_item(designObject, "$class"))));
    EXPECT_EQ(string(plist_dict_get_item(designClass, "$classname")), "HMKDesign");
    EXPECT_EQ(plist_get_node_type(plist_dict_get_item(designObject, "HMKEmbroiderDesignXMin")),
              PLIST_REAL);
    EXPECT_EQ(plist_get_node_type(plist_dict_get_item(designObject, "HMKEmbroiderDesignVersion")),
              PLIST_UINT);
    EXPECT_EQ(
        plist_get_node_type(plist_dict_get_item(designObject, "HMKEmbroiderDesignUseThreadFile")),
        PLIST_BOOLEAN);

    // The keys of an object appear in the order they are written.
    plist_t stitchList = plist_array_get_item(
        objects, static_cast<std::uint32_t>(
                     uid(plist_dict_get_item(designObject, "HMKEmbroiderDesignStitches"))));
    plist_t firstStitch = plist_array_get_item(
        objects, static_cast<std::uint32_t>(
                     uid(plist_array_get_item(plist_dict_get_item(stitchList, "NS.objects"), 0))));
    std::vector<std::string> keys;
    plist_dict_iter iter = nullptr;
    plist_dict_new_iter(firstStitch, &iter);
    plist_t value = nullptr;
    for (char* key = nullptr; (plist_dict_next_item(firstStitch, iter, &key, &value), key);
         key = nullptr) {
        keys.emplace_back(key);
        free(key);
    }
    free(iter);
    EXPECT_EQ(keys, (std::vector<std::string>{
                        "HMKEmbroideryStitchDeltaX", "HMKEmbroideryStitchDeltaY",
                        "HMKEmbroideryStitchIsJumpStitch", "HMKEmbroideryStitchIsColorChange",
                        "HMKEmbroideryStitchIsSelected", "$class"}));
    double deltaX = 0;
    plist_get_real_val(plist_dict_get_item(firstStitch, "HMKEmbroideryStitchDeltaX"), &deltaX);
    EXPECT_EQ(deltaX, static_cast<double>(design.stitches()[0].deltaX));
    plist_free(root);
}

TEST(Archive, MissingKeysDecodeAsZeroNoAndNil) {
    ForeignArchive archive;
    plist_t stitch = archive.object("HMKStitch");
    ForeignArchive::set(stitch, "HMKEmbroideryStitchDeltaY", plist_new_real(2.5));
    std::uint64_t stitchUid = archive.add(stitch);

    plist_t color = archive.object("HMKColor");
    ForeignArchive::set(color, "HMKColorGreen", plist_new_real(0.5));
    std::uint64_t colorUid = archive.add(color);
    plist_t thread = archive.object("HMKThread");
    ForeignArchive::set(thread, "HMKThreadColor", plist_new_uid(colorUid));
    ForeignArchive::set(thread, "HMKThreadName", plist_new_uid(archive.addString("Gold")));
    std::uint64_t threadUid = archive.add(thread);
    std::uint64_t bareThreadUid = archive.add(archive.object("HMKThread"));

    auto decoded = unarchiveDesign(archive.designWith(
        {{"HMKEmbroiderDesignStitches", plist_new_uid(archive.list({stitchUid, stitchUid}))},
         {"HMKEmbroiderDesignThreads",
          plist_new_uid(archive.list({threadUid, bareThreadUid}, "NSMutableArray"))},
         {"HMKEmbroiderDesignHoop", plist_new_uid(0)}}));
    ASSERT_TRUE(decoded);

    ASSERT_EQ(decoded->stitches().size(), 2u);
    EXPECT_EQ(decoded->stitches()[1], HMKStitch(0, 2.5f, false, false));
    EXPECT_FALSE(decoded->stitches()[1].isSelected);
    ASSERT_EQ(decoded->threads().size(), 2u);
    const HMKThread& gold = decoded->threads()[0];
    EXPECT_EQ(std::tuple(gold.color, gold.name, gold.key, gold.tension, gold.isShown, gold.length),
              std::tuple(HMKColor(0, 0.5, 0), "Gold", "", 0, false, 0.0f));
    EXPECT_EQ(decoded->threads()[1].color, HMKColor(0, 0, 0));
    EXPECT_EQ(decoded->designName(), "");
    EXPECT_EQ(decoded->designType(), "");
    EXPECT_EQ(decoded->designVersion(), 0);
    EXPECT_TRUE(decoded->designLocation().empty());
    EXPECT_FALSE(decoded->designHoop());
    EXPECT_EQ(decoded->xMax(), 0.0f);
    EXPECT_FALSE(decoded->useThreadFile());
    EXPECT_EQ(decoded->displayRange(), (HMKRange{0, 2}));
}

TEST(Archive, ReadsLocationsWithABaseUrlAndMutableStrings) {
    ForeignArchive archive;
    plist_t base = archive.object("NSURL");
    ForeignArchive::set(base, "NS.base", plist_new_uid(0));
    ForeignArchive::set(base, "NS.relative",
                        plist_new_uid(archive.addString("file:///Users/ann/")));
    std::uint64_t baseUid = archive.add(base);
    plist_t url = archive.object("NSURL");
    ForeignArchive::set(url, "NS.base", plist_new_uid(baseUid));
    ForeignArchive::set(url, "NS.relative", plist_new_uid(archive.addString("My%20Rose.dst")));
    std::uint64_t urlUid = archive.add(url);
    plist_t name = archive.object("NSMutableString");
    ForeignArchive::set(name, "NS.string", plist_new_string("Rose"));
    std::uint64_t nameUid = archive.add(name);

    auto decoded =
        unarchiveDesign(archive.designWith({{"HMKEmbroiderDesignLocation", plist_new_uid(urlUid)},
                                            {"HMKEmbroiderDesignName", plist_new_uid(nameUid)},
                                            {"HMKEmbroiderDesignVersion", plist_new_uint(10)}}));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->designLocation(), fs::path("/Users/ann/My Rose.dst"));
    EXPECT_EQ(decoded->designName(), "Rose");
    EXPECT_EQ(decoded->designVersion(), 10);
}

TEST(Archive, RejectsForeignAndMalformedObjectGraphs) {
    struct Case {
        const char* behaviour;
        const char* reason;
        std::vector<std::uint8_t> (*build)(ForeignArchive&);
    };
    const std::vector<Case> cases = {
        {"a root of another class", "is not of class HMKDesign",
         [](ForeignArchive& archive) {
             return archive.bytes(archive.add(archive.object("HMKThread")));
         }},
        {"another archiver", "not a keyed archive",
         [](ForeignArchive& archive) {
             return archive.bytes(archive.add(archive.object("HMKDesign")), "NSArchiver");
         }},
        {"a root UID past the objects", "points at object 999",
         [](ForeignArchive& archive) { return archive.bytes(999); }},
        {"a stitch UID past the objects", "points at object 12345",
         [](ForeignArchive& archive) {
             return archive.designWith(
                 {{"HMKEmbroiderDesignStitches", plist_new_uid(archive.list({12345}))}});
         }},
        {"a thread UID past the objects", "points at object 777",
         [](ForeignArchive& archive) {
             return archive.designWith(
                 {{"HMKEmbroiderDesignThreads", plist_new_uid(archive.list({777}))}});
         }},
        {"a URL that is its own base", "contains itself",
         [](ForeignArchive& archive) {
             plist_t url = archive.object("NSURL");
             std::uint64_t urlUid = 2;  // after $null and the URL's class
             ForeignArchive::set(url, "NS.base", plist_new_uid(urlUid));
             EXPECT_EQ(archive.add(url), urlUid);
             return archive.designWith({{"HMKEmbroiderDesignLocation", plist_new_uid(urlUid)}});
         }},
        {"a list that holds itself", "contains itself",
         [](ForeignArchive& archive) {
             std::uint64_t listUid = 2;  // after $null and the list's class
             plist_t list = archive.object("NSArray");
             plist_t items = plist_new_array();
             plist_array_append_item(items, plist_new_uid(listUid));
             ForeignArchive::set(list, "NS.objects", items);
             EXPECT_EQ(archive.add(list), listUid);
             return archive.designWith({{"HMKEmbroiderDesignThreads", plist_new_uid(listUid)}});
         }},
        {"a string where a number belongs", "is not a number",
         [](ForeignArchive& archive) {
             return archive.designWith({{"HMKEmbroiderDesignXMin", plist_new_string("wide")}});
         }},
        {"a version beyond 32 bits", "out of range",
         [](ForeignArchive& archive) {
             return archive.designWith({{"HMKEmbroiderDesignVersion", plist_new_uint(1ull << 40)}});
         }},
        {"a stitch with hundreds of keys", "too many keys",
         [](ForeignArchive& archive) {
             plist_t stitch = archive.object("HMKStitch");
             for (int i = 0; i < 300; ++i) {
                 ForeignArchive::set(stitch, ("extra" + std::to_string(i)).c_str(),
                                     plist_new_bool(1));
             }
             std::uint64_t stitches = archive.list({archive.add(stitch)});
             return archive.designWith({{"HMKEmbroiderDesignStitches", plist_new_uid(stitches)}});
         }},
        {"one long-named thread listed thousands of times", "expands far beyond",
         [](ForeignArchive& archive) {
             std::uint64_t name = archive.addString(std::string(100'000, 'n').c_str());
             plist_t thread = archive.object("HMKThread");
             ForeignArchive::set(thread, "HMKThreadName", plist_new_uid(name));
             std::uint64_t threads =
                 archive.list(std::vector<std::uint64_t>(10'000, archive.add(thread)));
             return archive.designWith({{"HMKEmbroiderDesignThreads", plist_new_uid(threads)}});
         }},
        {"a plain value where an object reference belongs", "where a reference belongs",
         [](ForeignArchive& archive) {
             return archive.designWith({{"HMKEmbroiderDesignName", plist_new_string("Rose")}});
         }},
    };
    for (const auto& c : cases) {
        HMKError error;
        ForeignArchive archive;
        EXPECT_FALSE(unarchiveDesign(c.build(archive), &error)) << c.behaviour;
        EXPECT_EQ(error.domain, kHMKArchiveErrorDomain) << c.behaviour;
        EXPECT_EQ(error.code, kHMKArchiveDamaged) << c.behaviour;
        EXPECT_THAT(error.failureReason, ::testing::HasSubstr(c.reason)) << c.behaviour;
        EXPECT_FALSE(error.message().empty()) << c.behaviour;
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
    fs::path dir = fs::temp_directory_path() / "hemlark-archive-test";
    fs::create_directories(dir);
    fs::path file = dir / "Rose.hemlark";
    HMKDesign design = randomDesign(500, 6);
    ASSERT_TRUE(writeDesignArchive(file, design));
    auto decoded = readDesignArchive(file);
    ASSERT_TRUE(decoded);
    expectSameDesign(*decoded, design);

    HMKError error;
    EXPECT_FALSE(readDesignArchive(dir / "missing.hemlark", &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_FALSE(writeDesignArchive(dir / "no-such-folder" / "x.hemlark", design, &error));
    EXPECT_EQ(error.code, ENOENT);
    fs::remove_all(dir);
}

}  // namespace
