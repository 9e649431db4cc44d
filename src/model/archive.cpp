#include "model/archive.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <limits>
#include <map>
#include <string>

#include "formats/file_io.h"
#include "model/binary_plist.h"
#include "model/strings.h"

namespace {

using PlistReader = HMKBinaryPlistReader;
using PlistObject = HMKBinaryPlistReader::Object;
using PlistKind = HMKBinaryPlistReader::Kind;

// The keyed-archiver frame around the objects.
constexpr std::string_view kArchiverName = "NSKeyedArchiver";
constexpr std::int64_t kArchiverVersion = 100000;
// $objects[0] is this placeholder, so UID 0 stands for "no object".
constexpr std::string_view kNullPlaceholder = "$null";
constexpr std::uint64_t kNullUid = 0;
// A URL relative to a base URL that is itself relative...: more than this is no real archive.
constexpr int kMaxUrlBaseDepth = 8;
constexpr std::string_view kFileUrlPrefix = "file://";
// Archived records have a handful of keys; an object with more is damaged, and refusing it
// keeps decoding linear even when one object is referenced from everywhere.
constexpr std::uint64_t kMaxKeysPerObject = 256;
// Decoded designs are at most this many times larger than their archive (plus a little), so
// an archive that references one large object from everywhere cannot exhaust memory.
constexpr std::size_t kMaxExpansion = 64;
constexpr std::size_t kExpansionAllowance = 1 << 20;
// Decoding visits each key and list item of an archive about once, but an object referenced
// from everywhere is decoded again for every reference: the keys and items visited are
// counted against this many per byte of the archive (plus a little), so decoding stays in
// time proportional to the archive's size.
constexpr std::size_t kMaxWorkPerByte = 4;
constexpr std::size_t kWorkAllowance = 1 << 20;

// Every key the archive uses. The records' keys come first, in the order they are written,
// and each record's keys are contiguous so a decoder can collect them into a small table.
enum Key : std::uint8_t {
    // HMKStitch ("EmbroideryStitch", unlike the design's "EmbroiderDesign"; both stay).
    StitchDeltaX,
    StitchDeltaY,
    StitchIsJumpStitch,
    StitchIsColorChange,
    StitchIsSelected,
    // HMKThread
    ThreadColor,
    ThreadName,
    ThreadKey,
    ThreadPalette,
    ThreadPaletteName,
    ThreadLength,
    ThreadTension,
    ThreadIsShown,
    // HMKColor
    ColorRed,
    ColorGreen,
    ColorBlue,
    // HMKHoop
    HoopName,
    HoopVendor,
    HoopCode,
    HoopWidth,
    HoopHeight,
    HoopIsMultiHoop,
    HoopIsRounded,
    HoopIsWritable,
    // HMKDesign
    DesignStitches,
    DesignThreads,
    DesignName,
    DesignType,
    DesignLocation,
    DesignHoop,
    DesignXMin,
    DesignXMax,
    DesignYMin,
    DesignYMax,
    DesignVersion,
    DesignUseThreadFile,
    DesignSelectionActive,
    // Foundation objects and the archiver's own keys.
    ArrayObjects,
    UrlBase,
    UrlRelative,
    StringText,
    ObjectClass,
    ClassName,
    ClassAncestors,
    KeyCount,
    UnknownKey = KeyCount,
};

constexpr std::array<std::string_view, KeyCount> kKeyNames = {
    "HMKEmbroideryStitchDeltaX",
    "HMKEmbroideryStitchDeltaY",
    "HMKEmbroideryStitchIsJumpStitch",
    "HMKEmbroideryStitchIsColorChange",
    "HMKEmbroideryStitchIsSelected",
    "HMKThreadColor",
    "HMKThreadName",
    "HMKThreadKey",
    "HMKThreadPalette",
    "HMKThreadPaletteName",
    "HMKThreadLength",
    "HMKThreadTension",
    "HMKThreadIsShown",
    "HMKColorRed",
    "HMKColorGreen",
    "HMKColorBlue",
    "HMKEmbroideryHoopName",
    "HMKEmbroideryHoopVendor",
    "HMKEmbroideryHoopCode",
    "HMKEmbroideryHoopWidth",
    "HMKEmbroideryHoopHeight",
    "HMKEmbroideryHoopIsMultiHoop",
    "HMKEmbroideryHoopIsRounded",
    "HMKEmbroideryHoopIsWritable",
    "HMKEmbroiderDesignStitches",
    "HMKEmbroiderDesignThreads",
    "HMKEmbroiderDesignName",
    "HMKEmbroiderDesignType",
    "HMKEmbroiderDesignLocation",
    "HMKEmbroiderDesignHoop",
    "HMKEmbroiderDesignXMin",
    "HMKEmbroiderDesignXMax",
    "HMKEmbroiderDesignYMin",
    "HMKEmbroiderDesignYMax",
    "HMKEmbroiderDesignVersion",
    "HMKEmbroiderDesignUseThreadFile",
    "HMKEmbroiderDesignSelectionActive",
    "NS.objects",
    "NS.base",
    "NS.relative",
    "NS.string",
    "$class",
    "$classname",
    "$classes",
};

// The classes an archive names, with the ancestry written beside each class name.
enum class ArchivedClass : std::uint8_t {
    Design,
    Stitch,
    Thread,
    Color,
    Hoop,
    MutableArray,
    Array,
    Url,
    MutableString,
    String,
    Unknown,
};

struct ClassInfo {
    std::string_view name;
    std::array<std::string_view, 3> ancestry;
};

constexpr std::array<ClassInfo, static_cast<std::size_t>(ArchivedClass::Unknown)> kClasses = {{
    {"HMKDesign", {"HMKDesign", "NSObject"}},
    {"HMKStitch", {"HMKStitch", "NSObject"}},
    {"HMKThread", {"HMKThread", "NSObject"}},
    {"HMKColor", {"HMKColor", "NSObject"}},
    {"HMKHoop", {"HMKHoop", "NSObject"}},
    {"NSMutableArray", {"NSMutableArray", "NSArray", "NSObject"}},
    {"NSArray", {"NSArray", "NSObject"}},
    {"NSURL", {"NSURL", "NSObject"}},
    {"NSMutableString", {"NSMutableString", "NSString", "NSObject"}},
    {"NSString", {"NSString", "NSObject"}},
}};

// Path characters that stand for themselves in a URL; everything else is percent-encoded.
bool isUrlPathCharacter(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("-._~/!$&'()*+,;=:@").find(static_cast<char>(c)) !=
               std::string_view::npos;
}

std::string percentEncode(std::string_view path) {
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string out;
    out.reserve(path.size());
    for (char ch : path) {
        auto c = static_cast<unsigned char>(ch);
        if (isUrlPathCharacter(c)) {
            out += ch;
        } else {
            out += '%';
            out += kHex[c >> 4];
            out += kHex[c & 0x0F];
        }
    }
    return out;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string percentDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 &&
            hexValue(text[i + 2]) >= 0) {
            out += static_cast<char>(hexValue(text[i + 1]) << 4 | hexValue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// The designs' locations are file URLs: absolute paths as "file://" URLs, relative ones as
// relative references.
std::string urlStringForPath(const std::filesystem::path& path) {
    std::string encoded = percentEncode(path.string());
    return path.is_absolute() ? std::string(kFileUrlPrefix) + encoded : encoded;
}

bool hasScheme(std::string_view url) {
    std::size_t colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0) {
        return false;
    }
    for (std::size_t i = 0; i < colon; ++i) {
        char c = url[i];
        bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!letter && !(i > 0 && ((c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'))) {
            return false;
        }
    }
    return true;
}

// A relative URL string resolved against the URL string of its base.
std::string resolveUrl(const std::string& relative, const std::string& base) {
    if (hasScheme(relative) || base.empty()) {
        return relative;
    }
    if (relative.starts_with('/')) {
        return base.starts_with(kFileUrlPrefix) ? std::string(kFileUrlPrefix) + relative : relative;
    }
    std::size_t lastSlash = base.rfind('/');
    return (lastSlash == std::string::npos ? std::string() : base.substr(0, lastSlash + 1)) +
           relative;
}

// The file path of a URL string. URLs of other schemes are kept as they are, so nothing an
// archive holds is lost.
std::filesystem::path pathForUrlString(std::string_view url) {
    if (url.starts_with(kFileUrlPrefix)) {
        // Past the scheme comes the host (empty or "localhost"), then the path.
        std::string_view rest = url.substr(kFileUrlPrefix.size());
        std::size_t slash = rest.find('/');
        return percentDecode(slash == std::string_view::npos ? "" : rest.substr(slash));
    }
    if (hasScheme(url)) {
        return std::string(url);
    }
    return percentDecode(url);
}

// --- Encoding --------------------------------------------------------------------------------

class ArchiveEncoder {
public:
    using Ref = HMKBinaryPlistWriter::Ref;

    std::vector<std::uint8_t> encode(const HMKDesign& design) {
        objects_.push_back(plist_.addString(kNullPlaceholder));
        nullUid_ = plist_.addUid(kNullUid);
        for (std::size_t key = 0; key < KeyCount; ++key) {
            keys_[key] = plist_.addString(kKeyNames[key]);
        }
        const Ref root = encodeDesign(design);

        const Ref top =
            plist_.addDictionary(std::array{plist_.addString("root")}, std::array{root});
        const Ref objects = plist_.addArray(objects_);
        const std::array frameKeys = {plist_.addString("$archiver"), plist_.addString("$objects"),
                                      plist_.addString("$top"), plist_.addString("$version")};
        const std::array frameValues = {plist_.addString(kArchiverName), objects, top,
                                        plist_.addInteger(kArchiverVersion)};
        return plist_.finish(plist_.addDictionary(frameKeys, frameValues));
    }

private:
    // Reserves the next $objects slot; the object is put there once its contents are known.
    std::size_t reserveSlot() {
        objects_.push_back(0);
        return objects_.size() - 1;
    }
    Ref place(std::size_t slot, Ref object) {
        objects_[slot] = object;
        return plist_.addUid(slot);
    }

    // Builds one archived object's dictionary: its fields in order, then its class.
    template <std::size_t N>
    struct Fields {
        std::array<Ref, N + 1> keys;
        std::array<Ref, N + 1> values;
        std::size_t count = 0;
        void add(Ref key, Ref value) {
            keys[count] = key;
            values[count++] = value;
        }
    };
    template <std::size_t N>
    Ref finishObject(std::size_t slot, Fields<N>& fields, ArchivedClass archivedClass) {
        fields.add(keys_[ObjectClass], classUid(archivedClass));
        return place(slot, plist_.addDictionary(std::span(fields.keys).first(fields.count),
                                                std::span(fields.values).first(fields.count)));
    }

    Ref classUid(ArchivedClass archivedClass) {
        auto& uid = classUids_[static_cast<std::size_t>(archivedClass)];
        if (!uid) {
            const ClassInfo& info = kClasses[static_cast<std::size_t>(archivedClass)];
            std::vector<Ref> ancestry;
            for (std::string_view name : info.ancestry) {
                if (!name.empty()) {
                    ancestry.push_back(plist_.addString(name));
                }
            }
            std::size_t slot = reserveSlot();
            uid = place(slot,
                        plist_.addDictionary(
                            std::array{keys_[ClassName], keys_[ClassAncestors]},
                            std::array{plist_.addString(info.name), plist_.addArray(ancestry)}));
        }
        return *uid;
    }

    // Equal strings are archived once and shared, as the archiver does with equal objects.
    Ref stringUid(const std::string& text) {
        auto [found, added] = stringUids_.try_emplace(text, 0);
        if (added) {
            found->second = place(reserveSlot(), plist_.addString(text));
        }
        return found->second;
    }

    Ref encodeDesign(const HMKDesign& design) {
        const std::size_t slot = reserveSlot();
        Fields<13> fields;
        fields.add(keys_[DesignStitches], encodeStitches(design.stitches()));
        fields.add(keys_[DesignThreads], encodeThreads(design.threads()));
        fields.add(keys_[DesignName], stringUid(design.designName()));
        fields.add(keys_[DesignType], stringUid(design.designType()));
        fields.add(keys_[DesignLocation], encodeLocation(design.designLocation()));
        fields.add(keys_[DesignHoop],
                   design.designHoop() ? encodeHoop(*design.designHoop()) : nullUid_);
        fields.add(keys_[DesignXMin], plist_.addReal(design.xMin()));
        fields.add(keys_[DesignXMax], plist_.addReal(design.xMax()));
        fields.add(keys_[DesignYMin], plist_.addReal(design.yMin()));
        fields.add(keys_[DesignYMax], plist_.addReal(design.yMax()));
        fields.add(keys_[DesignVersion], plist_.addInteger(design.designVersion()));
        fields.add(keys_[DesignUseThreadFile], plist_.addBool(design.useThreadFile()));
        fields.add(keys_[DesignSelectionActive], plist_.addBool(design.selectionActive()));
        return finishObject(slot, fields, ArchivedClass::Design);
    }

    // The list object comes first, then its items, as the archiver lays out a list.
    template <class Item, class EncodeItem>
    Ref encodeList(const std::vector<Item>& items, EncodeItem encodeItem) {
        const std::size_t slot = reserveSlot();
        std::vector<Ref> uids;
        uids.reserve(items.size());
        for (const Item& item : items) {
            uids.push_back(encodeItem(item));
        }
        Fields<1> fields;
        fields.add(keys_[ArrayObjects], plist_.addArray(uids));
        return finishObject(slot, fields, ArchivedClass::MutableArray);
    }

    Ref encodeStitches(const std::vector<HMKStitch>& stitches) {
        return encodeList(stitches, [this](const HMKStitch& stitch) {
            const std::size_t slot = reserveSlot();
            Fields<5> fields;
            fields.add(keys_[StitchDeltaX], plist_.addReal(stitch.deltaX));
            fields.add(keys_[StitchDeltaY], plist_.addReal(stitch.deltaY));
            fields.add(keys_[StitchIsJumpStitch], plist_.addBool(stitch.isJumpStitch));
            fields.add(keys_[StitchIsColorChange], plist_.addBool(stitch.isColorChange));
            fields.add(keys_[StitchIsSelected], plist_.addBool(stitch.isSelected));
            return finishObject(slot, fields, ArchivedClass::Stitch);
        });
    }

    Ref encodeThreads(const std::vector<HMKThread>& threads) {
        return encodeList(threads, [this](const HMKThread& thread) {
            const std::size_t slot = reserveSlot();
            Fields<8> fields;
            fields.add(keys_[ThreadColor], encodeColor(thread.color));
            fields.add(keys_[ThreadName], stringUid(thread.name));
            fields.add(keys_[ThreadKey], stringUid(thread.key));
            fields.add(keys_[ThreadPalette], stringUid(thread.palette));
            fields.add(keys_[ThreadPaletteName], stringUid(thread.paletteName));
            fields.add(keys_[ThreadLength], plist_.addReal(thread.length));
            fields.add(keys_[ThreadTension], plist_.addInteger(thread.tension));
            fields.add(keys_[ThreadIsShown], plist_.addBool(thread.isShown));
            return finishObject(slot, fields, ArchivedClass::Thread);
        });
    }

    // Colours are archived at single precision and widened again when read.
    Ref encodeColor(const HMKColor& color) {
        const std::size_t slot = reserveSlot();
        Fields<3> fields;
        fields.add(keys_[ColorRed], plist_.addReal(static_cast<float>(color.red())));
        fields.add(keys_[ColorGreen], plist_.addReal(static_cast<float>(color.green())));
        fields.add(keys_[ColorBlue], plist_.addReal(static_cast<float>(color.blue())));
        return finishObject(slot, fields, ArchivedClass::Color);
    }

    Ref encodeHoop(const HMKHoop& hoop) {
        const std::size_t slot = reserveSlot();
        Fields<8> fields;
        fields.add(keys_[HoopName], stringUid(hoop.name()));
        fields.add(keys_[HoopVendor], stringUid(hoop.vendor()));
        fields.add(keys_[HoopCode], plist_.addInteger(hoop.code()));
        fields.add(keys_[HoopWidth], plist_.addInteger(hoop.width()));
        fields.add(keys_[HoopHeight], plist_.addInteger(hoop.height()));
        fields.add(keys_[HoopIsMultiHoop], plist_.addBool(hoop.isMultiHoop()));
        fields.add(keys_[HoopIsRounded], plist_.addBool(hoop.isRounded()));
        fields.add(keys_[HoopIsWritable], plist_.addBool(hoop.isWritable()));
        return finishObject(slot, fields, ArchivedClass::Hoop);
    }

    // A design without a file has no URL at all.
    Ref encodeLocation(const std::filesystem::path& location) {
        if (location.empty()) {
            return nullUid_;
        }
        const std::size_t slot = reserveSlot();
        Fields<2> fields;
        fields.add(keys_[UrlBase], nullUid_);
        fields.add(keys_[UrlRelative], stringUid(urlStringForPath(location)));
        return finishObject(slot, fields, ArchivedClass::Url);
    }

    HMKBinaryPlistWriter plist_;
    std::vector<Ref> objects_;
    Ref nullUid_ = 0;
    std::array<Ref, KeyCount> keys_{};
    std::array<std::optional<Ref>, kClasses.size()> classUids_;
    std::map<std::string, Ref> stringUids_;
};

// --- Decoding --------------------------------------------------------------------------------

// Thrown inside the decoder only, with what was wrong; unarchiveDesign turns it into an error.
struct DamagedArchive {
    std::string reason;
};

class ArchiveDecoder {
public:
    ArchiveDecoder(const PlistReader& plist, std::size_t archiveSize)
        : plist_(plist),
          keyOfObject_(plist.objectCount(), kKeyNotLooked),
          budget_(archiveSize * kMaxExpansion + kExpansionAllowance),
          work_(archiveSize * kMaxWorkPerByte + kWorkAllowance) {}

    HMKDesign decode() {
        PlistObject frame = objectAt(plist_.top(), "the archive");
        if (frame.kind != PlistKind::Dictionary) {
            throw DamagedArchive{"the archive is not a dictionary"};
        }
        std::optional<PlistObject> archiver, objects, top;
        for (std::uint64_t i = 0; i < frame.count; ++i) {
            PlistObject key = objectAt(plist_.key(frame, i), "a key of the archive");
            PlistObject value = objectAt(plist_.value(frame, i), "a value of the archive");
            if (plist_.stringEquals(key, "$archiver"))
                archiver = value;
            if (plist_.stringEquals(key, "$objects"))
                objects = value;
            if (plist_.stringEquals(key, "$top"))
                top = value;
        }
        if (!archiver || !plist_.stringEquals(*archiver, kArchiverName)) {
            throw DamagedArchive{"not a keyed archive"};
        }
        if (!objects || objects->kind != PlistKind::Array || !top ||
            top->kind != PlistKind::Dictionary) {
            throw DamagedArchive{"the archive has no objects or no root"};
        }
        objects_ = *objects;
        decoding_.assign(objects_.count, false);
        std::optional<std::uint64_t> root;
        for (std::uint64_t i = 0; i < top->count; ++i) {
            if (plist_.stringEquals(objectAt(plist_.key(*top, i), "a key of $top"), "root")) {
                root = uidAt(plist_.value(*top, i));
            }
        }
        if (!root) {
            throw DamagedArchive{"the archive has no root object"};
        }
        return decodeDesign(*root);
    }

private:
    static constexpr std::uint8_t kKeyNotLooked = 0xFF;

    // The values of one archived object's keys first..last (null when missing) and its class.
    template <Key First, Key Last>
    struct Fields {
        std::array<std::optional<PlistReader::Ref>, Last - First + 1> values;
        std::optional<PlistReader::Ref> objectClass;
        const std::optional<PlistReader::Ref>& operator[](Key key) const {
            return values[key - First];
        }
    };

    // Marks an object as being decoded, so an object reached again from inside itself is a
    // cycle rather than endless recursion.
    class Visit {
    public:
        Visit(ArchiveDecoder& decoder, std::uint64_t uid) : decoder_(decoder), uid_(uid) {
            decoder_.checkUid(uid_);
            if (decoder_.decoding_[uid_]) {
                throw DamagedArchive{"object " + std::to_string(uid_) + " contains itself"};
            }
            decoder_.decoding_[uid_] = true;
        }
        ~Visit() { decoder_.decoding_[uid_] = false; }
        Visit(const Visit&) = delete;
        Visit& operator=(const Visit&) = delete;

    private:
        ArchiveDecoder& decoder_;
        std::uint64_t uid_;
    };

    PlistObject objectAt(std::optional<PlistReader::Ref> ref, const char* what) const {
        std::optional<PlistObject> object = ref ? plist_.object(*ref) : std::nullopt;
        if (!object) {
            throw DamagedArchive{std::string(what) + " is damaged"};
        }
        return *object;
    }

    // Accounts for memory the decoded design will hold.
    void charge(std::uint64_t bytes) {
        if (bytes > budget_) {
            throw DamagedArchive{"the archive expands far beyond its own size"};
        }
        budget_ -= bytes;
    }

    // Accounts for keys and items about to be visited.
    void work(std::uint64_t steps) {
        if (steps > work_) {
            throw DamagedArchive{"the archive takes work far beyond its size to decode"};
        }
        work_ -= steps;
    }

    // The number of keys of an archived object's dictionary, which the caller visits.
    std::uint64_t keyCount(const PlistObject& dictionary, const char* what) {
        if (dictionary.kind != PlistKind::Dictionary) {
            return 0;
        }
        if (dictionary.count > kMaxKeysPerObject) {
            throw DamagedArchive{std::string(what) + " has too many keys"};
        }
        work(dictionary.count);
        return dictionary.count;
    }

    PlistReader::Ref keyAt(const PlistObject& dictionary, std::uint64_t index) const {
        auto ref = plist_.key(dictionary, index);
        if (!ref) {
            throw DamagedArchive{"a dictionary refers to a missing key"};
        }
        return *ref;
    }
    PlistReader::Ref valueAt(const PlistObject& dictionary, std::uint64_t index) const {
        auto ref = plist_.value(dictionary, index);
        if (!ref) {
            throw DamagedArchive{"a dictionary refers to a missing value"};
        }
        return *ref;
    }

    std::uint64_t uidAt(std::optional<PlistReader::Ref> ref) const {
        PlistObject object = objectAt(ref, "an object reference");
        if (object.kind != PlistKind::Uid) {
            throw DamagedArchive{"an object is stored where a reference belongs"};
        }
        return object.uidValue;
    }

    void checkUid(std::uint64_t uid) const {
        if (uid >= objects_.count) {
            throw DamagedArchive{"a reference points at object " + std::to_string(uid) +
                                 " of only " + std::to_string(objects_.count)};
        }
    }

    // The archived object a UID refers to.
    PlistObject slot(std::uint64_t uid) const {
        checkUid(uid);
        return objectAt(plist_.item(objects_, uid), "an archived object");
    }

    Key keyOf(PlistReader::Ref keyRef) {
        std::uint8_t& known = keyOfObject_[keyRef];
        if (known == kKeyNotLooked) {
            known = UnknownKey;
            PlistObject key = objectAt(keyRef, "a key");
            for (std::size_t k = 0; k < KeyCount; ++k) {
                if (plist_.stringEquals(key, kKeyNames[k])) {
                    known = static_cast<std::uint8_t>(k);
                    break;
                }
            }
        }
        return static_cast<Key>(known);
    }

    // Collects the fields of the object at uid, which must be of the expected class. Keys of
    // other records are ignored, so an archive may carry more than this reader knows.
    template <Key First, Key Last>
    Fields<First, Last> fieldsOf(std::uint64_t uid, ArchivedClass expected, const char* what) {
        PlistObject object = slot(uid);
        if (object.kind != PlistKind::Dictionary) {
            throw DamagedArchive{std::string(what) + " is not an archived object"};
        }
        Fields<First, Last> fields;
        const std::uint64_t count = keyCount(object, what);
        for (std::uint64_t i = 0; i < count; ++i) {
            Key key = keyOf(keyAt(object, i));
            if (key >= First && key <= Last) {
                fields.values[key - First] = valueAt(object, i);
            } else if (key == ObjectClass) {
                fields.objectClass = valueAt(object, i);
            }
        }
        if (!fields.objectClass || classOf(uidAt(fields.objectClass)) != expected) {
            throw DamagedArchive{std::string(what) + " is not of class " +
                                 std::string(kClasses[static_cast<std::size_t>(expected)].name)};
        }
        return fields;
    }

    ArchivedClass classOf(std::uint64_t classUid) {
        // Millions of stitches share one class object: remember the last one looked up.
        if (lastClass_ && lastClass_->first == classUid) {
            return lastClass_->second;
        }
        lastClass_ = {classUid, classOfUncached(classUid)};
        return lastClass_->second;
    }

    ArchivedClass classOfUncached(std::uint64_t classUid) {
        auto found = classOfUid_.find(classUid);
        if (found != classOfUid_.end()) {
            return found->second;
        }
        ArchivedClass archivedClass = ArchivedClass::Unknown;
        PlistObject description = slot(classUid);
        const std::uint64_t count = keyCount(description, "a class");
        for (std::uint64_t i = 0; i < count; ++i) {
            if (keyOf(keyAt(description, i)) != ClassName) {
                continue;
            }
            PlistObject name = objectAt(valueAt(description, i), "a class name");
            for (std::size_t c = 0; c < kClasses.size(); ++c) {
                if (plist_.stringEquals(name, kClasses[c].name)) {
                    archivedClass = static_cast<ArchivedClass>(c);
                }
            }
        }
        classOfUid_.emplace(classUid, archivedClass);
        return archivedClass;
    }

    // --- Values: a missing key reads as 0, NO or nil, as the archiver's defaults --------------

    double number(const std::optional<PlistReader::Ref>& ref, const char* what) const {
        if (!ref) {
            return 0;
        }
        PlistObject object = objectAt(ref, what);
        switch (object.kind) {
            case PlistKind::Real:
                return object.realValue;
            case PlistKind::Integer:
                return static_cast<double>(object.integerValue);
            case PlistKind::Bool:
                return object.boolValue;
            default:
                throw DamagedArchive{std::string(what) + " is not a number"};
        }
    }

    // Doubles beyond the float range become endless rather than undefined.
    float floatValue(const std::optional<PlistReader::Ref>& ref, const char* what) const {
        const double value = number(ref, what);
        constexpr double kLargest = std::numeric_limits<float>::max();
        constexpr float kEndless = std::numeric_limits<float>::infinity();
        return value > kLargest    ? kEndless
               : value < -kLargest ? -kEndless
                                   : static_cast<float>(value);
    }

    // Moves are summed into positions: one that is endless or no number spoils them all.
    float finiteValue(const std::optional<PlistReader::Ref>& ref, const char* what) const {
        const float value = floatValue(ref, what);
        if (!std::isfinite(value)) {
            throw DamagedArchive{std::string(what) + " is not a finite number"};
        }
        return value;
    }

    bool boolValue(const std::optional<PlistReader::Ref>& ref, const char* what) const {
        return number(ref, what) != 0;
    }

    std::int64_t integerValue(const std::optional<PlistReader::Ref>& ref, const char* what) const {
        if (!ref) {
            return 0;
        }
        PlistObject object = objectAt(ref, what);
        if (object.kind == PlistKind::Integer) {
            return object.integerValue;
        }
        double value = number(ref, what);
        if (!(value >= -9.2e18 && value <= 9.2e18)) {
            throw DamagedArchive{std::string(what) + " is out of range"};
        }
        return static_cast<std::int64_t>(value);
    }

    // Fields declared as 32-bit integers refuse larger values rather than wrap.
    std::int32_t int32Value(const std::optional<PlistReader::Ref>& ref, const char* what) const {
        std::int64_t value = integerValue(ref, what);
        if (value < std::numeric_limits<std::int32_t>::min() ||
            value > std::numeric_limits<std::int32_t>::max()) {
            throw DamagedArchive{std::string(what) + " is out of range"};
        }
        return static_cast<std::int32_t>(value);
    }

    // A string object, or nil (read as the empty string).
    std::string stringValue(const std::optional<PlistReader::Ref>& ref, const char* what) {
        if (!ref) {
            return "";
        }
        std::uint64_t uid = uidAt(ref);
        if (uid == kNullUid) {
            return "";
        }
        PlistObject object = slot(uid);
        if (object.kind == PlistKind::String) {
            std::string text = *plist_.string(object);
            charge(text.size());
            return text;
        }
        // Mutable strings are archived as objects holding their text.
        Visit visit(*this, uid);
        PlistObject dictionary = object;
        if (dictionary.kind == PlistKind::Dictionary) {
            std::optional<std::uint64_t> classUid;
            std::optional<PlistReader::Ref> text;
            const std::uint64_t count = keyCount(dictionary, what);
            for (std::uint64_t i = 0; i < count; ++i) {
                Key key = keyOf(keyAt(dictionary, i));
                if (key == ObjectClass)
                    classUid = uidAt(valueAt(dictionary, i));
                if (key == StringText)
                    text = valueAt(dictionary, i);
            }
            if (classUid &&
                (classOf(*classUid) == ArchivedClass::MutableString ||
                 classOf(*classUid) == ArchivedClass::String) &&
                text) {
                if (auto string = plist_.string(objectAt(text, what))) {
                    charge(string->size());
                    return *string;
                }
            }
        }
        throw DamagedArchive{std::string(what) + " is not a string"};
    }

    // The items of a list object, each decoded by decodeItem(uid); nil is an empty list.
    template <class Item, class DecodeItem>
    std::vector<Item> listValue(const std::optional<PlistReader::Ref>& ref, const char* what,
                                DecodeItem decodeItem) {
        std::vector<Item> items;
        if (!ref) {
            return items;
        }
        std::uint64_t uid = uidAt(ref);
        if (uid == kNullUid) {
            return items;
        }
        Visit visit(*this, uid);
        PlistObject object = slot(uid);
        std::optional<PlistReader::Ref> list;
        std::optional<std::uint64_t> classUid;
        const std::uint64_t count = keyCount(object, what);
        for (std::uint64_t i = 0; i < count; ++i) {
            Key key = keyOf(keyAt(object, i));
            if (key == ObjectClass)
                classUid = uidAt(valueAt(object, i));
            if (key == ArrayObjects)
                list = valueAt(object, i);
        }
        if (!classUid || (classOf(*classUid) != ArchivedClass::MutableArray &&
                          classOf(*classUid) != ArchivedClass::Array)) {
            throw DamagedArchive{std::string(what) + " is not a list"};
        }
        PlistObject array = objectAt(list, what);
        if (array.kind != PlistKind::Array) {
            throw DamagedArchive{std::string(what) + " has no items"};
        }
        charge(array.count * sizeof(Item));
        work(array.count);
        items.reserve(array.count);
        for (std::uint64_t i = 0; i < array.count; ++i) {
            items.push_back(decodeItem(uidAt(plist_.item(array, i))));
        }
        return items;
    }

    // --- Records ---------------------------------------------------------------------------

    HMKStitch decodeStitch(std::uint64_t uid) {
        auto fields =
            fieldsOf<StitchDeltaX, StitchIsSelected>(uid, ArchivedClass::Stitch, "a stitch");
        HMKStitch stitch(finiteValue(fields[StitchDeltaX], "a stitch's deltaX"),
                         finiteValue(fields[StitchDeltaY], "a stitch's deltaY"),
                         boolValue(fields[StitchIsJumpStitch], "a stitch's jump flag"),
                         boolValue(fields[StitchIsColorChange], "a stitch's colour change flag"));
        stitch.isSelected = boolValue(fields[StitchIsSelected], "a stitch's selection flag");
        return stitch;
    }

    HMKColor decodeColor(const std::optional<PlistReader::Ref>& ref) {
        // A thread without a colour has no components to show: it reads as black.
        std::uint64_t uid = ref ? uidAt(ref) : kNullUid;
        if (uid == kNullUid) {
            return HMKColor(0, 0, 0);
        }
        Visit visit(*this, uid);
        auto fields = fieldsOf<ColorRed, ColorBlue>(uid, ArchivedClass::Color, "a colour");
        return HMKColor(floatValue(fields[ColorRed], "a colour's red"),
                        floatValue(fields[ColorGreen], "a colour's green"),
                        floatValue(fields[ColorBlue], "a colour's blue"));
    }

    HMKThread decodeThread(std::uint64_t uid) {
        Visit visit(*this, uid);
        auto fields = fieldsOf<ThreadColor, ThreadIsShown>(uid, ArchivedClass::Thread, "a thread");
        HMKThread thread(decodeColor(fields[ThreadColor]),
                         stringValue(fields[ThreadName], "a thread's name"),
                         stringValue(fields[ThreadKey], "a thread's key"),
                         stringValue(fields[ThreadPalette], "a thread's palette"),
                         stringValue(fields[ThreadPaletteName], "a thread's palette name"));
        thread.length = floatValue(fields[ThreadLength], "a thread's length");
        // Stored in 64 bits, kept in 32: larger values wrap as they always have.
        thread.tension =
            static_cast<std::int32_t>(integerValue(fields[ThreadTension], "a thread's tension"));
        // A thread archived without these keys is hidden and has tension 0, not the defaults
        // of a new thread: missing keys read as zero.
        thread.isShown = boolValue(fields[ThreadIsShown], "a thread's visibility");
        return thread;
    }

    std::optional<HMKHoop> decodeHoop(const std::optional<PlistReader::Ref>& ref) {
        std::uint64_t uid = ref ? uidAt(ref) : kNullUid;
        if (uid == kNullUid) {
            return std::nullopt;
        }
        Visit visit(*this, uid);
        auto fields = fieldsOf<HoopName, HoopIsWritable>(uid, ArchivedClass::Hoop, "the hoop");
        return HMKHoop(stringValue(fields[HoopName], "the hoop's name"),
                       stringValue(fields[HoopVendor], "the hoop's vendor"),
                       int32Value(fields[HoopCode], "the hoop's code"),
                       int32Value(fields[HoopWidth], "the hoop's width"),
                       int32Value(fields[HoopHeight], "the hoop's height"),
                       boolValue(fields[HoopIsMultiHoop], "the hoop's multi-hoop flag"),
                       boolValue(fields[HoopIsRounded], "the hoop's round flag"),
                       boolValue(fields[HoopIsWritable], "the hoop's writable flag"));
    }

    // The URL's string, resolved against its base URL when it has one.
    std::string urlString(std::uint64_t uid, int depth) {
        if (depth > kMaxUrlBaseDepth) {
            throw DamagedArchive{"the location's base URLs nest too deeply"};
        }
        Visit visit(*this, uid);
        auto fields = fieldsOf<UrlBase, UrlRelative>(uid, ArchivedClass::Url, "the location");
        std::string relative = stringValue(fields[UrlRelative], "the location's text");
        std::uint64_t baseUid = fields[UrlBase] ? uidAt(fields[UrlBase]) : kNullUid;
        if (baseUid == kNullUid) {
            return relative;
        }
        return resolveUrl(relative, urlString(baseUid, depth + 1));
    }

    std::filesystem::path decodeLocation(const std::optional<PlistReader::Ref>& ref) {
        std::uint64_t uid = ref ? uidAt(ref) : kNullUid;
        if (uid == kNullUid) {
            return {};
        }
        // Tolerate a location stored as a plain string.
        PlistObject object = slot(uid);
        if (object.kind == PlistKind::String) {
            return pathForUrlString(*plist_.string(object));
        }
        return pathForUrlString(urlString(uid, 0));
    }

    HMKDesign decodeDesign(std::uint64_t uid) {
        Visit visit(*this, uid);
        auto fields = fieldsOf<DesignStitches, DesignSelectionActive>(uid, ArchivedClass::Design,
                                                                      "the design");
        HMKDesign design;
        design.setStitches(
            listValue<HMKStitch>(fields[DesignStitches], "the stitch list",
                                 [this](std::uint64_t item) { return decodeStitch(item); }));
        design.setThreads(
            listValue<HMKThread>(fields[DesignThreads], "the thread list",
                                 [this](std::uint64_t item) { return decodeThread(item); }));
        design.setDesignName(stringValue(fields[DesignName], "the design's name"));
        design.setDesignType(stringValue(fields[DesignType], "the design's type"));
        design.setDesignLocation(decodeLocation(fields[DesignLocation]));
        design.setDesignHoop(decodeHoop(fields[DesignHoop]));
        design.setBounds(floatValue(fields[DesignXMin], "the design's xMin"),
                         floatValue(fields[DesignYMin], "the design's yMin"),
                         floatValue(fields[DesignXMax], "the design's xMax"),
                         floatValue(fields[DesignYMax], "the design's yMax"));
        design.setDesignVersion(int32Value(fields[DesignVersion], "the design's version"));
        design.setUseThreadFile(boolValue(fields[DesignUseThreadFile], "the thread file flag"));
        design.setSelectionActive(boolValue(fields[DesignSelectionActive], "the selection flag"));
        // The display range is not archived: a decoded design shows all of its stitches.
        design.setDisplayRange({0, design.stitches().size()});
        return design;
    }

    const PlistReader& plist_;
    PlistObject objects_;
    std::vector<std::uint8_t> keyOfObject_;
    std::vector<bool> decoding_;
    std::map<std::uint64_t, ArchivedClass> classOfUid_;
    std::optional<std::pair<std::uint64_t, ArchivedClass>> lastClass_;
    std::size_t budget_;
    std::size_t work_;
};

HMKError archiveError(int code, std::string reason) {
    HMKError error;
    error.domain = std::string(kHMKArchiveErrorDomain);
    error.code = code;
    error.recoverySuggestion = localizedString(kDesignStringTable, "ARCHIVE_DAMAGED",
                                               "The file is not a design archive or is damaged.");
    error.failureReason = std::move(reason);
    return error;
}

}  // namespace

std::vector<std::uint8_t> archiveDesign(const HMKDesign& design) {
    return ArchiveEncoder().encode(design);
}

std::optional<HMKDesign> unarchiveDesign(std::span<const std::uint8_t> data, HMKError* error) {
    std::string problem;
    auto plist = HMKBinaryPlistReader::open(data, &problem);
    if (!plist) {
        if (error) {
            *error = archiveError(kHMKArchiveNotAnArchive, problem);
        }
        return std::nullopt;
    }
    try {
        return ArchiveDecoder(*plist, data.size()).decode();
    } catch (const DamagedArchive& damaged) {
        if (error) {
            *error = archiveError(kHMKArchiveDamaged, damaged.reason);
        }
        return std::nullopt;
    }
}

bool writeDesignArchive(const std::filesystem::path& path, const HMKDesign& design,
                        HMKError* error) {
    return writeFileAtomically(path, archiveDesign(design), error);
}

std::optional<HMKDesign> readDesignArchive(const std::filesystem::path& path, HMKError* error) {
    errno = 0;
    auto bytes = readWholeFile(path);
    if (!bytes) {
        if (error) {
            *error = makePosixError(errno != 0 ? errno : EIO, path.string());
        }
        return std::nullopt;
    }
    return unarchiveDesign(*bytes, error);
}
