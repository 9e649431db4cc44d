// HMKDesign: the one in-memory model of an embroidery design. It holds the stitch records
// (relative moves, in sewing order), one thread per colour block, the bounds of all needle
// positions, name, source format, version and hoop. Readers fill it, writers read it, the
// editors change it in place and the renderer draws it; the operations are spread over the
// subsystems' folders (model/, formats/, edit/, render/) but all live on this class.
#pragma once

#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/error.h"
#include "model/geometry.h"
#include "model/hoop.h"
#include "model/stitch.h"
#include "model/thread.h"

class HMKDrawingContext;

// Bounds of an empty design: minima at the largest float, maxima at its negative.
inline constexpr float kEmptyBoundsMin = std::numeric_limits<float>::max();
inline constexpr float kEmptyBoundsMax = -std::numeric_limits<float>::max();
// indexOfShownThread() when no thread is shown.
inline constexpr std::int64_t kThreadNotFound = std::numeric_limits<std::int64_t>::max();

class HMKDesign {
public:
    HMKDesign() = default;
    // Copies are deep: every stitch and thread is copied (undo snapshots, pasteboard).

    // --- Fields -------------------------------------------------------------------------
    std::vector<HMKStitch>& stitches() { return stitches_; }
    const std::vector<HMKStitch>& stitches() const { return stitches_; }
    void setStitches(std::vector<HMKStitch> stitches) { stitches_ = std::move(stitches); }
    std::vector<HMKThread>& threads() { return threads_; }
    const std::vector<HMKThread>& threads() const { return threads_; }
    void setThreads(std::vector<HMKThread> threads) { threads_ = std::move(threads); }

    const std::string& designName() const { return designName_; }
    void setDesignName(std::string name) { designName_ = std::move(name); }
    const std::string& designType() const { return designType_; }
    void setDesignType(std::string type) { designType_ = std::move(type); }
    std::int32_t designVersion() const { return designVersion_; }
    void setDesignVersion(std::int32_t version) { designVersion_ = version; }
    const std::filesystem::path& designLocation() const { return designLocation_; }
    void setDesignLocation(std::filesystem::path location) {
        designLocation_ = std::move(location);
    }
    const std::optional<HMKHoop>& designHoop() const { return designHoop_; }
    void setDesignHoop(std::optional<HMKHoop> hoop) { designHoop_ = std::move(hoop); }

    float xMin() const { return xMin_; }
    float yMin() const { return yMin_; }
    float xMax() const { return xMax_; }
    float yMax() const { return yMax_; }
    void setBounds(float xMin, float yMin, float xMax, float yMax) {
        xMin_ = xMin, yMin_ = yMin, xMax_ = xMax, yMax_ = yMax;
    }
    // Empties the bounds (the inverted box) before they are widened again.
    void resetBounds() {
        setBounds(kEmptyBoundsMin, kEmptyBoundsMin, kEmptyBoundsMax, kEmptyBoundsMax);
    }
    // Widens the bounds to include (x, y): x minimum, x maximum, y minimum, y maximum.
    void widenBounds(float x, float y) {
        if (x < xMin_)
            xMin_ = x;
        if (x > xMax_)
            xMax_ = x;
        if (y < yMin_)
            yMin_ = y;
        if (y > yMax_)
            yMax_ = y;
    }
    // Resets the bounds and widens them by the position after every record (float sums).
    void recomputeBounds();

    // The file was read by the format its content names, after the reader its extension
    // names refused it (a PES file named .pec); the design type says which format it holds.
    bool extensionMismatch() const { return extensionMismatch_; }
    void setExtensionMismatch(bool mismatch) { extensionMismatch_ = mismatch; }
    bool useThreadFile() const { return useThreadFile_; }
    void setUseThreadFile(bool use) { useThreadFile_ = use; }
    bool selectionActive() const { return selectionActive_; }
    void setSelectionActive(bool active) { selectionActive_ = active; }
    HMKRange displayRange() const { return displayRange_; }
    void setDisplayRange(HMKRange range) { displayRange_ = range; }

    // --- Statistics (derived, nothing cached) --------------------------------------------
    std::size_t numberOfThreads() const { return threads_.size(); }
    // Records + 1 - threads: colour changes are not stitches, the first block is implicit.
    std::int32_t numberOfStitches() const;
    // Jump records that are not colour changes.
    std::int32_t numberOfJumps() const;
    std::size_t numberOfDifferentColors() const;
    std::int32_t designWidth() const;
    std::int32_t designHeight() const;
    HMKPoint centerOfDesign() const;
    // Where the first sewn stitch begins: the sum of the leading jumps.
    HMKPoint firstStitch() const;
    // The final needle position: the sum of all deltas.
    HMKPoint lastStitch() const;

    // --- Thread accessors (the index must be valid) --------------------------------------
    const HMKColor& colorOfThread(std::int32_t index) const { return threads_[index].color; }
    const std::string& nameOfThread(std::int32_t index) const { return threads_[index].name; }
    const std::string& paletteOfThread(std::int32_t index) const { return threads_[index].palette; }
    bool isShownOfThread(std::int32_t index) const { return threads_[index].isShown; }
    void setIsShown(bool shown, std::int32_t index) { threads_[index].isShown = shown; }
    bool isShownOfAllThreads() const;
    std::int64_t indexOfShownThread() const;
    // The palette id all threads share; "" when there are none or they differ.
    std::string designPalette() const;
    // The palette display name all threads share; "Threadcolors" when none or they differ.
    std::string designPaletteName() const;
    // The design can be saved back in its own format (PES only as version 1.0).
    bool isWritable() const;
    // The information panel's text: size, counts and one line per thread.
    std::string description() const;

    // --- Hoops ---------------------------------------------------------------------------
    // The catalog, always in the same order (it is the search order of findHoopFromVendor).
    static std::vector<HMKHoop> hoops();
    // The catalog entries of a vendor, in catalog order; none when there is no match.
    static std::optional<std::vector<HMKHoop>> allHoopsFromVendor(std::string_view vendor);
    // Selects the hoop a file names by vendor and code; code -1 clears the hoop.
    bool setHoopFromVendor(std::string_view vendor, std::int32_t code);
    // The first writable hoop of the vendor, in catalog order, that the design fits.
    std::optional<HMKHoop> findHoopFromVendor(std::string_view vendor) const;
    bool designFitsInHoop(const HMKHoop& hoop) const;
    bool stitchesOutsideOfHoop(const HMKHoop& hoop) const;
    std::string hoopName() const;
    std::int32_t hoopWidth() const;
    std::int32_t hoopHeight() const;
    std::int32_t hoopCode() const;
    std::string hoopVendor() const;
    bool hoopIsRound() const;

    // --- Palettes and thread codes -------------------------------------------------------
    bool changeThread(std::int32_t index, const HMKColor& color, const std::string& palette);
    // JEF colour index -> "Janome" key (79 entries).
    static std::map<std::int32_t, std::string> janomeColorCodes();
    // PEC colour index -> "Brother" key (64 entries, used when writing).
    static std::map<std::int32_t, std::string> brotherColorCodes();
    // brotherColorCodes plus the extra indexes some files carry (used when reading).
    static std::map<std::int32_t, std::string> brotherReadColorCodes();

    // --- Import and the thread side file -------------------------------------------------
    bool importDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importThreadsForDesign(const std::filesystem::path& url);
    bool exportThreadsForDesign(const std::filesystem::path& url) const;
    bool deleteThreadsFromDesign(const std::filesystem::path& url) const;

    bool importDstDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importPesDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importPecDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importPecSegmentFromData(std::span<const std::uint8_t> segment, HMKError* error = nullptr);
    // The number of colour blocks (1 or more), or 0 on failure. Spelled so on purpose.
    std::int32_t importPecStichesFromData(std::span<const std::uint8_t> segment, std::size_t offset,
                                          HMKError* error = nullptr);
    bool importJefDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importJpxDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importExpDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importSewDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importKsmDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importVp3DesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool importPcxDesignFromURL(const std::filesystem::path& url, HMKError* error = nullptr);

    // --- Export --------------------------------------------------------------------------
    bool exportDesignToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool exportDstDesignToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool exportPesDesignToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool exportPecDesignToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool exportJefDesignToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool exportExpDesignToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    bool exportPcsDesignToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    std::vector<std::uint8_t> exportPecSegmentToData();
    // One 48 x 38 one-bit thumbnail (228 bytes); thread -1 draws all threads.
    std::vector<std::uint8_t> exportPecBitmapToDataForThread(std::int32_t thread) const;

    // --- Selection and hit testing -------------------------------------------------------
    HMKRect selectionRect() const;
    void selectAll();
    void deselectAll();
    void invertAll();
    void selectInRect(const HMKRect& rect, bool unselectMode);
    // -1 for none; tolerance is compared with the squared distance.
    std::int32_t indexOfStitchAt(HMKPoint point, float tolerance) const;
    bool isSelectedAt(HMKPoint point, float tolerance) const;
    void selectStitchAt(HMKPoint point, float tolerance, bool unselectMode);
    void selectBlockAt(HMKPoint point, float tolerance, bool unselectMode);
    std::int32_t indexOfThreadAt(HMKPoint point, float tolerance) const;

    // --- Geometric transforms of the selection -------------------------------------------
    bool centerDesign();
    bool flipSelection(std::string_view orientation, HMKError* error = nullptr);
    bool rotateSelectionByDegrees(std::int32_t degrees, HMKError* error = nullptr);
    bool moveSelectionByVector(HMKPoint vector, HMKError* error = nullptr);
    bool resizeSelectionByPercent(float factor, HMKError* error = nullptr);

    // --- Stitch edits and jump normalisation ---------------------------------------------
    // Returns the index at which the stitch formerly at index now stands.
    std::int32_t insertJump(HMKPoint vector, std::int32_t index);
    bool deleteSelection(HMKError* error = nullptr);
    bool switchSelectionToJumps(bool toJumps, HMKError* error = nullptr);
    // Merges jump runs, splits moves too long for the format, recomputes the bounds.
    bool optimizeJumpsFor(std::string_view type);
    bool trimSelectedJumps();
    bool addBastingWithLength(float lengthMm, float distanceMm, HMKError* error = nullptr);

    // --- Thread edits --------------------------------------------------------------------
    bool deleteThreadAtIndex(std::int32_t index, HMKError* error = nullptr);
    bool insertThreadBeforeSelection(HMKError* error = nullptr);
    bool moveThreadFromIndex(std::int32_t from, std::int32_t to, HMKError* error = nullptr);
    bool appendDesign(const HMKDesign& other, HMKError* error = nullptr);

    // --- Rendering -----------------------------------------------------------------------
    void drawDesignInRect(const HMKRect& rect, HMKDrawingContext& context, bool show3D,
                          bool showJumps, bool showStructure, std::int32_t showThread = -1) const;

private:
    std::vector<HMKStitch> stitches_;
    std::vector<HMKThread> threads_;
    std::string designName_;
    std::string designType_;
    std::int32_t designVersion_ = 0;
    std::filesystem::path designLocation_;
    std::optional<HMKHoop> designHoop_;
    float xMin_ = 0;
    float yMin_ = 0;
    float xMax_ = 0;
    float yMax_ = 0;
    bool extensionMismatch_ = false;
    bool useThreadFile_ = false;
    bool selectionActive_ = false;
    HMKRange displayRange_;
};
