// Stitch edits: inserting a jump, deleting the selection, turning stitches into jumps, the
// basting outline, and optimizeJumpsFor, the normalisation pass every edit and every export
// ends with. Designs run to millions of stitches, so each edit rebuilds the stitch list in
// one pass instead of inserting into and erasing from the vector in place.
#include <algorithm>
#include <cmath>

#include "edit/jump_insertion.h"
#include "model/design.h"
#include "model/stitch_walk.h"

namespace {

// The longest move a format can encode on each axis, for normal stitches and for jumps.
struct HMKMoveLimits {
    float stitch;
    float jump;
};

// Types without a writer are never split: their limit is out of reach.
constexpr HMKMoveLimits kUnlimitedMoves{999999, 999999};

HMKMoveLimits moveLimitsFor(std::string_view type) {
    if (type == "JEF") {
        return {126, 126};
    }
    if (type == "PES" || type == "PEC") {
        return {62, 2046};
    }
    if (type == "EXP") {
        return {126, 126};
    }
    if (type == "DST") {
        return {120, 120};
    }
    if (type == "PCS") {
        return {1150, 1150};
    }
    return kUnlimitedMoves;
}

bool isJumpOrChange(const HMKStitch& stitch) {
    return stitch.isJumpStitch || stitch.isColorChange;
}

// Every run of consecutive jumps and colour changes becomes one stitch carrying the run's
// whole movement (a jump if any member was one, selected as the run's first stitch), dropped
// when that movement is null, followed by one zero-length colour change per colour change of
// the run: the thread count is kept and a colour change never carries movement.
std::vector<HMKStitch> mergeJumpRuns(const std::vector<HMKStitch>& stitches) {
    std::vector<HMKStitch> merged;
    merged.reserve(stitches.size());
    std::size_t i = 0;
    while (i < stitches.size()) {
        if (!isJumpOrChange(stitches[i])) {
            merged.push_back(stitches[i++]);
            continue;
        }
        HMKStitch run = stitches[i++];
        std::size_t colorChanges = run.isColorChange ? 1 : 0;
        run.isColorChange = false;
        for (; i < stitches.size() && isJumpOrChange(stitches[i]); ++i) {
            run.deltaX += stitches[i].deltaX;
            run.deltaY += stitches[i].deltaY;
            run.isJumpStitch = run.isJumpStitch || stitches[i].isJumpStitch;
            colorChanges += stitches[i].isColorChange ? 1 : 0;
        }
        if (!run.isNullStitch()) {
            merged.push_back(run);
        }
        merged.insert(merged.end(), colorChanges, HMKStitch(0, 0, false, true));
    }
    return merged;
}

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
    std::vector<HMKStitch> merged = mergeJumpRuns(stitches_);
    // A trailing jump moves the needle for nothing; only the last record is looked at.
    if (!merged.empty() && merged.back().isJumpStitch) {
        merged.pop_back();
    }

    HMKMoveLimits limits = moveLimitsFor(type);
    stitches_.clear();
    stitches_.reserve(merged.size());
    resetBounds();
    float x = 0, y = 0;
    auto append = [&](const HMKStitch& stitch) {
        stitches_.push_back(stitch);
        x += stitch.deltaX;
        y += stitch.deltaY;
        widenBounds(x, y);
    };
    for (const HMKStitch& stitch : merged) {
        HMKStitch piece = stitch;
        float pieceX = 0, pieceY = 0;
        while (
            firstPieceOf(piece, piece.isJumpStitch ? limits.jump : limits.stitch, pieceX, pieceY)) {
            HMKStitch rest = piece;
            rest.deltaX = piece.deltaX - pieceX;
            rest.deltaY = piece.deltaY - pieceY;
            // A float too large for the limit to make a dent in it cannot be cut further.
            if (rest.deltaX == piece.deltaX && rest.deltaY == piece.deltaY) {
                break;
            }
            rest.isColorChange = false;
            // The rest of a stitch that follows a jump is a jump itself (and so is cut to the
            // jump limit): the machine would not sew a long stitch coming out of a move.
            if (!stitches_.empty() && stitches_.back().isJumpStitch) {
                rest.isJumpStitch = true;
            }
            piece.deltaX = pieceX;
            piece.deltaY = pieceY;
            append(piece);
            piece = rest;
        }
        append(piece);
    }

    trimSelectedJumps();
    displayRange_ = {0, stitches_.size()};
    return true;
}

bool HMKDesign::trimSelectedJumps() {
    bool trimmed = false;
    auto selected = [](const HMKStitch& stitch) { return stitch.isSelected; };
    auto first = std::find_if(stitches_.begin(), stitches_.end(), selected);
    for (; first != stitches_.end() && first->isSelected && isJumpOrChange(*first); ++first) {
        first->isSelected = false;
        trimmed = true;
    }
    auto last = std::find_if(stitches_.rbegin(), stitches_.rend(), selected);
    for (; last != stitches_.rend() && last->isSelected && isJumpOrChange(*last); ++last) {
        last->isSelected = false;
        trimmed = true;
    }
    return trimmed;
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
