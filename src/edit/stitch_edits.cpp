// Stitch edits: inserting a jump, deleting the selection, turning stitches into jumps, the
// basting outline, and optimizeJumpsFor, the normalisation pass every edit and every export
// ends with. Designs run to millions of stitches, so each edit rebuilds the stitch list in
// one pass instead of inserting into and erasing from the vector in place.
#include <algorithm>
#include <cmath>
#include <optional>

#include "edit/jump_insertion.h"
#include "model/design.h"
#include "model/stitch_walk.h"

namespace {

// The longest move a format can encode on each axis, for normal stitches and for jumps, and
// the most stitches its files hold as its writer counts them (0: no such limit).
struct HMKMoveLimits {
    float stitch;
    float jump;
    double mostStitches = 0;
};

// Types without a writer are never split: their limit is out of reach.
constexpr HMKMoveLimits kUnlimitedMoves{999999, 999999};

HMKMoveLimits moveLimitsFor(std::string_view type) {
    if (type == "JEF") {
        return {126, 126};
    }
    if (type == "PES") {
        return {62, 2046, 30'000};
    }
    if (type == "PEC") {
        return {62, 2046};
    }
    if (type == "EXP") {
        return {126, 126};
    }
    if (type == "DST") {
        return {120, 120, 9'999'999};
    }
    if (type == "PCS") {
        return {1150, 1150, 14'000};
    }
    return kUnlimitedMoves;
}

// --- The budget of cutting ----------------------------------------------------------------
// Cutting may add this many stitches per stitch of the design, or this many whatever its size:
// a few bytes of a file can hold moves of millions of units, which must not turn into
// millions of stitches. Real designs gain a few pieces per long jump, far less than this.
constexpr double kAddedStitchesPerStitch = 8;
constexpr double kAddedStitchesOfAnyDesign = 1 << 20;
// Never more than twice what the format's files hold, so that the writer's own stitch count
// check, not this budget, refuses designs near the limit; 64 million for formats without one.
constexpr double kFormatLimitMargin = 2;
constexpr double kAddedStitchesWithoutFormatLimit = 1 << 26;
// A float move cut into more pieces than this loses the precision to be cut exactly.
constexpr double kMostPiecesOfOneMove = 1 << 22;

// An upper bound of the stitches that merging and cutting add for the format, counted before
// anything is changed; none when a move is no finite number or too long to be cut. A run of
// jumps and colour changes merges into at most the pieces of its members, plus one
// zero-length colour change per member that carried a move.
std::optional<double> stitchesAddedByCutting(const std::vector<HMKStitch>& stitches,
                                             const HMKMoveLimits& limits) {
    double added = 0;
    for (const HMKStitch& stitch : stitches) {
        if (!std::isfinite(stitch.deltaX) || !std::isfinite(stitch.deltaY)) {
            return std::nullopt;
        }
        const double longest = std::max(std::fabs(stitch.deltaX), std::fabs(stitch.deltaY));
        const double pieces =
            std::ceil(longest / (stitch.isJumpStitch ? limits.jump : limits.stitch));
        if (pieces > kMostPiecesOfOneMove) {
            return std::nullopt;
        }
        // A stitch cut into n pieces adds at most n: float rounding may leave one more.
        added += pieces > 1 ? pieces : 0;
        added += stitch.isColorChange && !stitch.isNullStitch() ? 1 : 0;
    }
    return added;
}

double mostAddedStitches(std::size_t count, const HMKMoveLimits& limits) {
    const double ofTheDesign =
        std::max(kAddedStitchesPerStitch * static_cast<double>(count), kAddedStitchesOfAnyDesign);
    return std::min(ofTheDesign, limits.mostStitches > 0 ? kFormatLimitMargin * limits.mostStitches
                                                         : kAddedStitchesWithoutFormatLimit);
}

bool isJumpOrChange(const HMKStitch& stitch) {
    return stitch.isJumpStitch || stitch.isColorChange;
}

// Writes a rebuilt stitch list over the list it is read from, as long as the writing stays
// behind the reading; the first stitch that would overtake it moves the output to a new list.
// Normalisation mostly shrinks a list or keeps its length, so the usual pass allocates nothing.
class HMKOverwritingWriter {
public:
    // `capacity` is the most stitches that will be written.
    HMKOverwritingWriter(std::vector<HMKStitch>& list, std::size_t capacity)
        : list_(list), capacity_(capacity) {}

    // `read` is the number of stitches of the list read so far; they may be overwritten.
    void push(const HMKStitch& stitch, std::size_t read) {
        if (moved_ || written_ >= read) {
            pushMoved(stitch);
        } else {
            list_[written_] = stitch;
        }
        ++written_;
    }
    std::size_t size() const { return written_; }
    const HMKStitch& operator[](std::size_t index) const {
        return moved_ ? output_[index] : list_[index];
    }
    void finish() {
        if (moved_) {
            list_ = std::move(output_);
        } else {
            list_.resize(written_);
        }
    }

private:
    [[gnu::noinline]] void pushMoved(const HMKStitch& stitch) {
        if (!moved_) {
            moved_ = true;
            output_.reserve(capacity_);
            output_.assign(list_.begin(), list_.begin() + static_cast<std::ptrdiff_t>(written_));
        }
        output_.push_back(stitch);
    }

    std::vector<HMKStitch>& list_;
    std::size_t capacity_;
    std::vector<HMKStitch> output_;
    std::size_t written_ = 0;
    bool moved_ = false;
};

// The first piece of a stitch cut to the format's limit, on the stitch's own line. Both ratios
// use the stitch's own deltas; a value exactly at the limit is not cut. Returns false when the
// stitch can stay whole.
bool firstPieceOf(const HMKStitch& stitch, float limit, float& pieceX, float& pieceY) {
    float dx = stitch.deltaX, dy = stitch.deltaY;
    pieceX = dx, pieceY = dy;
    bool split = false;
    if (std::fabs(dx) > limit) {
        pieceX = dx * limit / std::fabs(dx);
        pieceY = (dy / dx) * pieceX;
        split = true;
    }
    if (std::fabs(pieceY) > limit) {
        pieceY = limit * pieceY / std::fabs(pieceY);
        pieceX = (dx / dy) * pieceY;
        split = true;
    }
    if (stitch.isColorChange && !stitch.isNullStitch()) {
        pieceX = 0, pieceY = 0;
        split = true;
    }
    return split;
}

// Deselects the jumps and colour changes at both ends of the selection, which runs from
// index `first` to index `last` (both selected). Returns true if any stitch was deselected.
bool trimSelectionEnds(std::vector<HMKStitch>& stitches, std::size_t first, std::size_t last) {
    bool trimmed = false;
    std::size_t i = first;
    for (; i < stitches.size() && stitches[i].isSelected && isJumpOrChange(stitches[i]); ++i) {
        stitches[i].isSelected = false;
        trimmed = true;
    }
    // When the forward trim went past the last selected stitch, nothing is left selected.
    if (i > last) {
        return trimmed;
    }
    for (std::size_t j = last + 1;
         j-- > 0 && stitches[j].isSelected && isJumpOrChange(stitches[j]);) {
        stitches[j].isSelected = false;
        trimmed = true;
    }
    return trimmed;
}

}  // namespace

std::int32_t HMKDesign::insertJump(HMKPoint vector, std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= stitches_.size()) {
        return index;
    }
    HMKStitch before = index == 0 ? HMKStitch() : stitches_[index - 1];
    HMKStitch next = stitches_[index];
    stitches_.insert(
        stitches_.begin() + index,
        HMKStitch(static_cast<float>(vector.x), static_cast<float>(vector.y), true, false));
    if (!needsLandingStitch(before, next)) {
        return index + 1;
    }
    HMKStitch landing(0, 0, false, false);
    landing.isSelected = next.isSelected;
    stitches_.insert(stitches_.begin() + index + 1, landing);
    return index + 2;
}

bool HMKDesign::optimizeJumpsFor(std::string_view type) {
    const HMKMoveLimits limits = moveLimitsFor(type);
    // Refused before any stitch changes or anything is allocated; the edits that end here
    // still get bounds and a display range that match their stitches.
    const std::optional<double> added = stitchesAddedByCutting(stitches_, limits);
    if (!added || *added > mostAddedStitches(stitches_.size(), limits)) {
        recomputeBounds();
        displayRange_ = {0, stitches_.size()};
        return false;
    }

    // One pass: merging feeds the splitting, which writes over the list behind the reading.
    // Plain stitches within the limits take a short path; the running position and the
    // bounds are locals so that the loop keeps them in registers.
    HMKOverwritingWriter output(stitches_, stitches_.size() + static_cast<std::size_t>(*added));
    std::size_t read = 0;

    // Cuts a stitch into pieces within the format's limits, all on the stitch's own line.
    auto splitAndAppend = [&](const HMKStitch& stitch) {
        auto limitOf = [&](const HMKStitch& s) {
            return s.isJumpStitch ? limits.jump : limits.stitch;
        };
        float pieceX = 0, pieceY = 0;
        if (!firstPieceOf(stitch, limitOf(stitch), pieceX, pieceY)) {
            output.push(stitch, read);
            return;
        }
        HMKStitch piece = stitch;
        do {
            HMKStitch rest = piece;
            rest.deltaX = piece.deltaX - pieceX;
            rest.deltaY = piece.deltaY - pieceY;
            // A float too large for the limit to make a dent in it cannot be cut further.
            if (rest.deltaX == piece.deltaX && rest.deltaY == piece.deltaY) {
                break;
            }
            rest.isColorChange = false;
            // Deliberate, kept so that files come out as they always have: the rest of a
            // stitch that follows a jump is a jump too, and is cut to the jump limit.
            if (output.size() > 0 && output[output.size() - 1].isJumpStitch) {
                rest.isJumpStitch = true;
            }
            piece.deltaX = pieceX;
            piece.deltaY = pieceY;
            output.push(piece, read);
            piece = rest;
        } while (firstPieceOf(piece, limitOf(piece), pieceX, pieceY));
        output.push(piece, read);
    };

    // Every run of consecutive jumps and colour changes becomes one stitch carrying the run's
    // whole movement (a jump if any member was one, selected as the run's first stitch),
    // dropped when that movement is null, followed by one zero-length colour change per
    // colour change of the run: the thread count is kept and colour changes carry no movement.
    auto mergeRun = [&](std::size_t count) {
        HMKStitch run = stitches_[read++];
        std::size_t colorChanges = run.isColorChange ? 1 : 0;
        run.isColorChange = false;
        for (; read < count && isJumpOrChange(stitches_[read]); ++read) {
            const HMKStitch& next = stitches_[read];
            run.deltaX += next.deltaX;
            run.deltaY += next.deltaY;
            run.isJumpStitch = run.isJumpStitch || next.isJumpStitch;
            colorChanges += next.isColorChange ? 1 : 0;
        }
        if (!run.isNullStitch()) {
            splitAndAppend(run);
        }
        for (std::size_t i = 0; i < colorChanges; ++i) {
            splitAndAppend(HMKStitch(0, 0, false, true));
        }
    };

    // A trailing jump moves the needle for nothing and is dropped; only the last record after
    // merging is looked at. That record is a jump exactly when the list ends with a run of
    // jumps without a colour change (a null merged jump disappears anyway), so such a run is
    // left out from the start.
    std::size_t count = stitches_.size();
    std::size_t trailingRun = count;
    while (trailingRun > 0 && isJumpOrChange(stitches_[trailingRun - 1])) {
        --trailingRun;
    }
    if (std::none_of(stitches_.begin() + static_cast<std::ptrdiff_t>(trailingRun), stitches_.end(),
                     [](const HMKStitch& stitch) { return stitch.isColorChange; })) {
        count = trailingRun;
    }

    float x = 0, y = 0;
    float minX = kEmptyBoundsMin, minY = kEmptyBoundsMin;
    float maxX = kEmptyBoundsMax, maxY = kEmptyBoundsMax;
    // The ends of the selection in the output, for trimming it afterwards without a search.
    constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::size_t firstSelected = kNone, lastSelected = kNone;
    auto widen = [&](const HMKStitch& stitch, std::size_t index) {
        if (stitch.isSelected) {
            firstSelected = std::min(firstSelected, index);
            lastSelected = index;
        }
        x += stitch.deltaX;
        y += stitch.deltaY;
        if (x < minX)
            minX = x;
        if (x > maxX)
            maxX = x;
        if (y < minY)
            minY = y;
        if (y > maxY)
            maxY = y;
    };
    while (read < count) {
        const HMKStitch& stitch = stitches_[read];
        if (!isJumpOrChange(stitch) && std::fabs(stitch.deltaX) <= limits.stitch &&
            std::fabs(stitch.deltaY) <= limits.stitch) {
            // Written at or before this index; a stitch written over itself is unchanged.
            ++read;
            output.push(stitch, read);
            widen(stitch, output.size() - 1);
            continue;
        }
        std::size_t written = output.size();
        if (isJumpOrChange(stitch)) {
            mergeRun(count);
        } else {
            splitAndAppend(stitches_[read++]);
        }
        for (; written < output.size(); ++written) {
            widen(output[written], written);
        }
    }
    output.finish();
    setBounds(minX, minY, maxX, maxY);

    if (firstSelected != kNone) {
        trimSelectionEnds(stitches_, firstSelected, lastSelected);
    }
    displayRange_ = {0, stitches_.size()};
    return true;
}

bool HMKDesign::trimSelectedJumps() {
    auto selected = [](const HMKStitch& stitch) { return stitch.isSelected; };
    auto first = std::find_if(stitches_.begin(), stitches_.end(), selected);
    if (first == stitches_.end()) {
        return false;
    }
    auto last = std::find_if(stitches_.rbegin(), stitches_.rend(), selected);
    return trimSelectionEnds(
        stitches_, static_cast<std::size_t>(first - stitches_.begin()),
        stitches_.size() - 1 - static_cast<std::size_t>(last - stitches_.rbegin()));
}

bool HMKDesign::deleteSelection(HMKError*) {
    // Deleted stitches are left out of a new list; a colour change stays (without movement)
    // so that the thread records still match, and a jump bridges every deleted run.
    std::vector<HMKStitch> kept;
    kept.reserve(stitches_.size());
    bool inDeletedRun = false;
    HMKPosition<double> runStart;
    walkStitches(stitches_, [&](std::size_t, const HMKStitch& stitch, auto start, auto) {
        if (stitch.isSelected) {
            if (!inDeletedRun) {
                runStart = start;
                inDeletedRun = true;
            }
            if (stitch.isColorChange) {
                HMKStitch change = stitch;
                change.deltaX = 0, change.deltaY = 0;
                kept.push_back(change);
            }
            return;
        }
        if (inDeletedRun) {
            appendJumpBefore(kept, start.x - runStart.x, start.y - runStart.y, stitch);
            inDeletedRun = false;
        }
        kept.push_back(stitch);
    });

    // A thread is empty when, after its colour change, the next colour change (or the end)
    // comes before any real stitch. Deciding that needs only what follows, so one backward
    // pass marks every such colour change before the forward pass removes them.
    std::vector<bool> beginsEmptyThread(kept.size());
    bool realStitchFollows = false;
    for (std::size_t i = kept.size(); i-- > 0;) {
        const HMKStitch& stitch = kept[i];
        if (stitch.isColorChange) {
            beginsEmptyThread[i] = !realStitchFollows;
            realStitchFollows = false;
        } else if (!stitch.isJumpStitch && !stitch.isNullStitch()) {
            realStitchFollows = true;
        }
    }
    std::vector<bool> dropThread(threads_.size());
    std::size_t write = 0;
    std::size_t thread = 0;
    for (std::size_t read = 0; read < kept.size(); ++read) {
        HMKStitch stitch = kept[read];
        if (stitch.isColorChange) {
            ++thread;
            if (beginsEmptyThread[read]) {
                if (thread < dropThread.size()) {
                    dropThread[thread] = true;
                }
                if (stitch.isNullStitch()) {
                    continue;
                }
                stitch.isColorChange = false;
            }
        }
        kept[write++] = stitch;
    }
    kept.resize(write);
    std::size_t threadIndex = 0;
    std::erase_if(threads_, [&](const HMKThread&) { return dropThread[threadIndex++]; });

    // The first thread is empty when only jumps and null stitches precede its end.
    auto firstChange = std::find_if(kept.begin(), kept.end(),
                                    [](const HMKStitch& stitch) { return stitch.isColorChange; });
    if (firstChange != kept.end() &&
        std::all_of(kept.begin(), firstChange, [](const HMKStitch& stitch) {
            return stitch.isJumpStitch || stitch.isNullStitch();
        })) {
        if (firstChange->isNullStitch()) {
            kept.erase(firstChange);
        } else {
            firstChange->isColorChange = false;
        }
        if (!threads_.empty()) {
            threads_.erase(threads_.begin());
        }
    }

    stitches_ = std::move(kept);
    optimizeJumpsFor(designType_);
    if (stitches_.empty()) {
        // An emptied design keeps a 20 mm box around the origin rather than inverted bounds.
        threads_.clear();
        setBounds(-100, -100, 100, 100);
    }
    return true;
}

bool HMKDesign::switchSelectionToJumps(bool toJumps, HMKError*) {
    for (auto& stitch : stitches_) {
        if (stitch.isSelected) {
            stitch.isJumpStitch = toJumps;
        }
    }
    optimizeJumpsFor(designType_);
    return true;
}

bool HMKDesign::addBastingWithLength(float lengthMm, float distanceMm, HMKError*) {
    // There is no outline around an empty design (its bounds are inverted).
    if (stitches_.empty()) {
        return true;
    }
    // Design units are 0.1 mm; the outline lies 10 * distance units outside the bounds.
    float width = static_cast<float>(designWidth()) + 20 * distanceMm;
    float height = static_cast<float>(designHeight()) + 20 * distanceMm;
    float cornerX = xMin_ - 10 * distanceMm;
    float cornerY = yMax_ + 10 * distanceMm;
    float stitchLength = lengthMm * 10;
    // Nor is there one made of stitches without length, or one without width.
    if (!(stitchLength > 0) || !(width > 0) || !(height >= 0)) {
        return true;
    }
    auto rows = static_cast<std::int64_t>(std::ceil(height / stitchLength));
    auto columns = static_cast<std::int64_t>(std::ceil(width / stitchLength));
    float stepY = height / static_cast<float>(rows);
    float stepX = width / static_cast<float>(columns);
    // The start is tied in with up to three short stitches of at most 2 mm.
    float tieIn = stepX < 20 ? stepX : 20;
    auto tieInCount =
        std::min<std::int64_t>(static_cast<std::int64_t>(std::ceil(width / tieIn)), 3);
    float tiedLength = static_cast<float>(tieInCount) * tieIn;
    auto tiedColumns = static_cast<std::int64_t>(std::ceil(tiedLength / stepX));

    HMKThread basting = threads_.empty() ? HMKThread() : threads_.front();
    basting.changeToColor(HMKColor(0, 0, 0), designPalette());
    threads_.insert(threads_.begin(), basting);

    std::vector<HMKStitch> stitches;
    stitches.reserve(stitches_.size() + 2 * static_cast<std::size_t>(rows + columns) + 8);
    auto repeat = [&](std::int64_t count, float dx, float dy) {
        for (std::int64_t i = 0; i < count; ++i) {
            stitches.emplace_back(dx, dy, false, false);
        }
    };
    stitches.emplace_back(cornerX, cornerY, true, false);
    stitches.emplace_back(0, 0, false, false);
    repeat(tieInCount, tieIn, 0);
    stitches.emplace_back(static_cast<float>(tiedColumns) * stepX - tiedLength, 0, false, false);
    repeat(columns - tiedColumns, stepX, 0);
    repeat(rows, 0, -stepY);
    repeat(columns, -stepX, 0);
    repeat(rows, 0, stepY);
    stitches.emplace_back(-cornerX, -cornerY, true, false);
    stitches.emplace_back(0, 0, false, true);
    stitches.insert(stitches.end(), stitches_.begin(), stitches_.end());
    stitches_ = std::move(stitches);

    optimizeJumpsFor(designType_);
    return true;
}
