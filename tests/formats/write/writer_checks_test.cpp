// What each writer checks before it writes and what it makes of the design afterwards (limits,
// hoops, the threads it converts or replaces), against tests/golden/writer-checks.txt.
#include <functional>

#include "support/test_support.h"

namespace {

HMKHoop catalogHoop(const std::string& vendor, const std::string& name) {
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        if (hoop.vendor() == vendor && hoop.name() == name)
            return hoop;
    }
    throw std::logic_error("no such hoop");
}

// A design of one stitch claiming the given bounds and hoop.
HMKDesign bounded(float xMin, float yMin, float xMax, float yMax,
                  std::optional<HMKHoop> hoop = std::nullopt) {
    HMKDesign design = makeDesign({stitch(0, 0)}, {makeThread("001", "Janome")});
    design.setBounds(xMin, yMin, xMax, yMax);
    design.setDesignHoop(hoop);
    return design;
}

// change() records before the stitches, with one Brother thread per block.
HMKDesign blocks(std::size_t threads, std::size_t stitches, Bounds bounds) {
    Stitches records(threads - 1, change());
    records.resize(records.size() + stitches, stitch(0, 0));
    HMKDesign design = makeDesign(records, std::vector(threads, makeThread("405", "Brother")));
    design.setBounds(bounds[0], bounds[1], bounds[2], bounds[3]);
    return design;
}

}  // namespace

TEST(WriterChecks, RefuseOrChangeTheDesignAsTheGoldenFileRecords) {
    const DesignWriter dst = &HMKDesign::exportDstDesignToURL,
                       exp = &HMKDesign::exportExpDesignToURL,
                       jef = &HMKDesign::exportJefDesignToURL,
                       pcs = &HMKDesign::exportPcsDesignToURL,
                       pes = &HMKDesign::exportPesDesignToURL,
                       pec = &HMKDesign::exportPecDesignToURL;
    const HMKHoop brotherHoop("100 x 100", "Brother", 0, 100, 100, false, false, true);
    HMKDesign far = makeDesign({stitch(100000, 0)});
    far.setBounds(-10, -10, 10, 10);
    HMKDesign coloured =
        makeDesign(Stitches(21, change()), std::vector(22, makeThread("405", "Brother")));
    coloured.setDesignHoop(HMKDesign::hoops().front());
    HMKDesign carried = makeDesign({stitch(1, 1), stitch(-2, -2)}, {makeThread("405", "Brother")});
    carried.setUseThreadFile(true);
    Stitches pcsLimit;
    for (int i = 0; i < 14015; ++i)
        pcsLimit.push_back(i > 0 && i <= 15 ? change() : stitch(i % 2 ? 1 : -1, 0));
    HMKDesign janomeColour = makeDesign(
        {stitch(1, 1)}, {makeThread("", "", HMKThread::fromPaletteKey("208", "Janome").color)});
    HMKDesign janomeCarried = janomeColour;
    janomeCarried.setUseThreadFile(true);
    const std::tuple<std::string, DesignWriter, HMKDesign> cases[] = {
        {"DST: bounds at the origin", dst, bounded(0, 0, 0, 0)},
        {"DST: the largest bounds", dst, bounded(-99999, -99999, 99999, 99999)},
        {"DST: bounds right of the origin", dst, bounded(1, -10, 10, 10)},
        {"DST: bounds left of the origin", dst, bounded(-10, -10, -1, 10)},
        {"DST: bounds above the origin", dst, bounded(-10, 1, 10, 10)},
        {"DST: bounds below the origin", dst, bounded(-10, -10, 10, -1)},
        {"DST: xMax beyond the field", dst, bounded(-10, -10, 100000, 10)},
        {"DST: xMin beyond the field", dst, bounded(-100000, -10, 10, 10)},
        {"DST: yMax beyond the field", dst, bounded(-10, -10, 10, 100000)},
        {"DST: yMin beyond the field", dst, bounded(-10, -100000, 10, 10)},
        {"DST: a sum beyond the field, bounds claiming less", dst, far},
        {"DST: placeholders replace the threads; no hoop", dst, coloured},
        {"DST: unless the side file carries the threads", dst, carried},
        {"EXP: placeholders replace the threads; no hoop", exp, coloured},
        {"EXP: unless the side file carries the threads", exp, carried},
        {"PES: 64 threads in the largest version 1 design", pes,
         blocks(64, 1, {-650, -900, 650, 900})},
        {"PES: 651 wide", pes, blocks(1, 1, {-650, -900, 651, 900})},
        {"PES: 901 high", pes, blocks(1, 1, {-650, -901, 650, 900})},
        {"PES: not centred left", pes, blocks(1, 1, {-651, -10, 10, 10})},
        {"PES: not centred right", pes, blocks(1, 1, {-10, -10, 651, 10})},
        {"PES: not centred down", pes, blocks(1, 1, {-10, -901, 10, 10})},
        {"PES: not centred up", pes, blocks(1, 1, {-10, -10, 10, 901})},
        {"PES: 65 threads", pes, blocks(65, 1, {-10, -10, 10, 10})},
        {"PES: too large before too many threads", pes, blocks(65, 1, {-651, -10, 651, 10})},
        {"PES: 30000 stitches", pes, blocks(1, 30000, {0, 0, 0, 0})},
        {"PES: 30001 stitches", pes, blocks(1, 30001, {0, 0, 0, 0})},
        {"PEC: a thread matched into the Brother palette", pec,
         makeDesign({stitch(1, 1)},
                    {makeThread("", "", HMKThread::fromPaletteKey("620", "Brother").color)})},
        {"JEF: no hoop fits", jef, bounded(-2000, -2000, 2000, 2000)},
        {"JEF: the Brother hoop comes back", jef, bounded(-2000, -2000, 2000, 2000, brotherHoop)},
        {"JEF: too large for its Janome hoop", jef,
         bounded(-600, -10, 600, 10, catalogHoop("Janome", "A"))},
        {"JEF: stitches outside", jef, bounded(0, 0, 1000, 10, catalogHoop("Janome", "A"))},
        {"JEF: the edge counts as outside", jef,
         bounded(-10, -10, 550, 10, catalogHoop("Janome", "A"))},
        {"JEF: a hoop not writable", jef, bounded(-10, -10, 10, 10, catalogHoop("Janome", "MA"))},
        // 90 x 35 mm: "A", not the smaller "FA10/~a" further down the catalog.
        {"JEF: the first Janome hoop that fits replaces a Brother one", jef,
         bounded(-450, -175, 450, 175, brotherHoop)},
        {"JEF: a thread matched into the Janome palette", jef, janomeColour},
        {"JEF: unless the side file carries the threads", jef, janomeCarried},
        {"PCS: no hoop fits", pcs, bounded(-700, -10, 700, 10, brotherHoop)},
        {"PCS: too large for its Pfaff hoop", pcs,
         bounded(-450, -10, 450, 10, catalogHoop("Pfaff", "S"))},
        {"PCS: stitches outside", pcs, bounded(0, 0, 1000, 10, catalogHoop("Pfaff", "L"))},
        {"PCS: a hoop not writable", pcs,
         bounded(-10, -10, 10, 10, HMKHoop("Custom", "Pfaff", 9, 200, 200, false, false, false))},
        {"PCS: a Pfaff hoop that fits is kept", pcs,
         bounded(-20, -20, 10, 10, catalogHoop("Pfaff", "L"))},
        {"PCS: 16 threads and 14000 stitches", pcs, makeDesign(pcsLimit)},
        {"PCS: 14001 stitches before the hoop", pcs, blocks(1, 14002, {-5000, -5000, 5000, 5000})},
        {"PCS: 17 threads before the stitches", pcs, blocks(17, 20000, {-5000, -5000, 5000, 5000})},
    };
    std::string trace;
    const auto write = [&](const std::string& name, DesignWriter writer, HMKDesign design) {
        ScratchFolder folder;
        HMKError error;
        const bool written = (design.*writer)(folder.file("design"), &error);
        trace += "# " + name + "\n" +
                 (written ? "written " + std::to_string(folder.read("design").size()) + " bytes"
                          : "refused " + std::to_string(error.code) + ": " + error.message() +
                                (folder.names().empty() ? "" : ", yet a file was written")) +
                 "\n" + describe(design);
    };
    for (const auto& [name, writer, design] : cases)
        write(name, writer, design);
    // Bounds that would be refused with 130; stitches + threads = records + 1, at most 9999998.
    write("DST: too many stitches before anything else", dst,
          blocks(1001, 9999998 - 1000, {5, 5, 10, 10}));
    write("DST: then too many colour changes", dst, blocks(1001, 9999997 - 1000, {5, 5, 10, 10}));
    write("DST: then the bounds", dst, blocks(1000, 9999997 - 999, {5, 5, 10, 10}));
    expectGolden(trace, "writer-checks.txt");
    // A write that fails after the hoop check keeps the new hoop and the design's type.
    HMKDesign failing = bounded(-20, -20, 10, 10, brotherHoop);
    EXPECT_FALSE(failing.exportJefDesignToURL("/nonexistent/folder/a.jef"));
    EXPECT_EQ(hoopNameOf(failing), "C/FA/M3");
    EXPECT_EQ(failing.designType(), "DST");
}
